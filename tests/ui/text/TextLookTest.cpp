#include "ui/text/TextLook.h"

#include "TextFixture.h"

namespace korvex::ui {
namespace {

class TextLookTest : public tests::TextFixture {};

TEST_F(TextLookTest, EveryColourOfTextCanBeReadOnEveryGround) {
    using richtext::Color;
    using richtext::SystemColor;
    using Appearance = app::AppPreferences::Appearance;
    using Contrast = Theme::SystemContrast;
    for (const auto& [appearance, asked, least] :
         {std::tuple(Appearance::light, Contrast::usual, 4.5),
          std::tuple(Appearance::dark, Contrast::usual, 4.5),
          std::tuple(Appearance::light, Contrast::high, 7.0),
          std::tuple(Appearance::dark, Contrast::high, 7.0)}) {
        preferences.setAppearance(appearance);
        theme.setSystem({.contrast = asked});
        const auto shown = look();
        const auto& colors = theme.colors();
        std::vector<QColor> texts{shown.text, shown.quiet, shown.link,
                                  shown.foreground({.red = 250, .green = 250, .blue = 200}),
                                  shown.foreground({.red = 10, .green = 20, .blue = 10})};
        for (auto name = static_cast<int>(SystemColor::label);
             name <= static_cast<int>(SystemColor::red); ++name) {
            texts.push_back(shown.foreground(Color::named(static_cast<SystemColor>(name))));
        }
        for (const auto& text : texts) {
            for (const auto& ground :
                 {colors.content, colors.selection, colors.tinted(colors.content, Tint::rest),
                  shown.codeGround, shown.headerFill}) {
                EXPECT_GE(contrast(text, ground), least)
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
