#include "ui/boards/NamedRow.h"

#include "ui/WindowFixture.h"

#include <QPainter>

namespace korvex::ui {
namespace {

class NamedRowTest : public tests::WindowFixture {
protected:
    QImage drawn(const char* name, const char* note, int width) const {
        QImage image(width, NamedRow::height(theme), QImage::Format_RGB32);
        image.fill(theme.colors().sidebar);
        QPainter painter(&image);
        const NamedRow row{.icon = QStringLiteral("folder-fill"),
                           .iconColor = theme.colors().accent,
                           .name = QString::fromUtf8(name),
                           .note = QString::fromUtf8(note)};
        row.paint(painter, image.rect(), {}, theme);
        return image;
    }
};

TEST_F(NamedRowTest, ACountNeverTakesTheNamesPlace) {
    const struct {
        int fontSize;
        int width;
        bool hasCount;
    } cases[] = {{10, 180, true}, {13, 180, true}, {24, 332, true}, {24, 180, false}};
    for (const auto& [fontSize, width, hasCount] : cases) {
        SCOPED_TRACE(std::to_string(fontSize) + " at " + std::to_string(width));
        preferences.setFontSize(fontSize);
        for (const auto* const name : {"Work", "Everything that is still to be done at home"}) {
            EXPECT_NE(drawn(name, "10,000", width), drawn("", "10,000", width));
            EXPECT_EQ(drawn(name, "10,000", width) != drawn(name, "", width), hasCount) << name;
        }
    }
}

} // namespace
} // namespace korvex::ui
