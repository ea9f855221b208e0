#include "ui/text/OfferedFiles.h"

#include "ui/kit/words/Text.h"
#include "ui/text/RichTextClipboard.h"

#include <QBuffer>
#include <QImage>
#include <QUrl>

namespace korvex::ui {

namespace {

constexpr const char* kPngType = "image/png";
/// Beyond this many pixels no picture fits into an attachment.
constexpr qint64 kMaximumPixels = 100'000'000;

/// Text that stands for itself, not for files.
bool hasWords(const QMimeData& data) {
    return !toQString(textFrom(data).text()).trimmed().isEmpty();
}

base::Bytes toBytes(const QByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

} // namespace

std::vector<std::filesystem::path> offeredFiles(const QMimeData& data) {
    std::vector<std::filesystem::path> files;
    const auto urls = data.hasUrls() ? data.urls() : QList<QUrl>();
    for (const auto& url : urls) {
        if (!url.isLocalFile()) {
            return {};
        }
        files.push_back(toPath(url.toLocalFile()));
    }
    return files;
}

bool isForAttaching(const QMimeData& data) {
    if (data.hasUrls() && !data.hasHtml()) {
        return !offeredFiles(data).empty();
    }
    return data.hasImage() && !hasWords(data);
}

std::optional<base::Bytes> offeredPicture(const QMimeData& data) {
    if (const auto png = data.data(QLatin1String(kPngType)); !png.isEmpty()) {
        return toBytes(png);
    }
    const auto image = qvariant_cast<QImage>(data.imageData());
    if (image.isNull() || qint64{image.width()} * image.height() > kMaximumPixels) {
        return std::nullopt;
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    return image.save(&buffer, "PNG") ? std::optional(toBytes(png)) : std::nullopt;
}

} // namespace korvex::ui
