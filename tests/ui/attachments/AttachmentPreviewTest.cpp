#include "ui/attachments/AttachmentPreview.h"

#include <QBuffer>
#include <QPainter>

#include <gtest/gtest.h>

namespace korvex::ui {
namespace {

QByteArray encoded(const QSize& size, const char* format) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::darkGreen);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return bytes;
}

TEST(AttachmentPreview, PicturesAreDecodedNoLargerThanAskedFor) {
    constexpr QSize kRoom(360, 280);
    struct Case {
        QSize size;
        const char* format;
        QSize shown;
    };
    for (const auto& [size, format, shown] : {
             Case{{40, 30}, "PNG", {40, 30}},
             Case{{720, 280}, "PNG", {360, 140}},
             Case{{4000, 3000}, "JPG", {360, 270}},
             Case{{5000, 2}, "PNG", {360, 1}},
             Case{{100, 100}, "BMP", {100, 100}},
         }) {
        const auto picture = decodePreview(encoded(size, format), kRoom);
        EXPECT_EQ(picture.image.size(), shown) << format << ' ' << size.width();
        EXPECT_EQ(picture.fullSize, size);
    }
}

TEST(AttachmentPreview, WhatIsNoPictureShowsNothing) {
    auto cut = encoded({200, 200}, "PNG");
    cut.truncate(20);
    // A header that promises 30,000 by 30,000 pixels.
    auto enormous = encoded({10, 10}, "BMP");
    const qint32 side = 30'000;
    enormous.replace(18, 4, reinterpret_cast<const char*>(&side), 4);
    enormous.replace(22, 4, reinterpret_cast<const char*>(&side), 4);
    const QByteArray drawing("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\">"
                             "<image href=\"file:///etc/passwd\"/></svg>");
    for (const auto& file :
         {QByteArray(), QByteArray("no picture at all"), cut, enormous, drawing}) {
        EXPECT_TRUE(decodePreview(file, {360, 280}).image.isNull()) << file.left(30).toStdString();
    }
}

} // namespace
} // namespace korvex::ui
