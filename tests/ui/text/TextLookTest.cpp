#include "ui/text/TextLook.h"

#include "TextFixture.h"

namespace korvex::ui {
namespace {

class TextLookTest : public tests::TextFixture {};

TEST_F(TextLookTest, EveryColourOfTextCanBeReadOnEveryGround) {
    using richtext::Color;
    using richtext::SystemColor;
    for (const auto appearance :
         {app::AppPreferences::Appearance::light, app::AppPreferences::Appearance::dark}) {
        preferences.setAppearance(appearance);
        const auto shown = look();
        const auto& colors = theme.colors();
        std::vector<QColor> texts{shown.text, shown.link,
                                  shown.foreground({.red = 250, .green = 250, .blue = 200}),
                                  shown.foreground({.red = 10, .green = 20, .blue = 10})};
        for (auto name = static_cast<int>(SystemColor::label);
             name <= static_cast<int>(SystemColor::red); ++name) {
            texts.push_back(shown.foreground(Color::named(static_cast<SystemColor>(name))));
        }
        for (const auto& text : texts) {
            for (const auto& ground : {colors.content, colors.selection, colors.hover,
                                       shown.codeGround, shown.headerFill}) {
                EXPECT_GE(contrast(text, ground), 4.5)
                    << text.name().toStdString() << " on " << ground.name().toStdString();
            }
        }
    }
}

TEST_F(TextLookTest, SizesGrowWithThePreferredSize) {
    preferences.setFontSize(11);
    const auto usual = look();
    preferences.setFontSize(22);
    const auto large = look();
    EXPECT_DOUBLE_EQ(large.pointSize(richtext::kBaseFontSize), theme.font().pointSizeF());
    EXPECT_NEAR(large.pointSize(20'000) / usual.pointSize(20'000), 2, 0.01);
    EXPECT_NEAR(large.pixels(200) / usual.pixels(200), 2, 0.1);
}

} // namespace
} // namespace korvex::ui
