#include "ui/kit/theme/Theme.h"

#include "ui/WindowFixture.h"

#include <QSignalSpy>

namespace korvex::ui {
namespace {

class ThemeTest : public tests::WindowFixture {};

TEST_F(ThemeTest, TextsCanBeReadOnEveryGroundWhateverTheSystemsAccent) {
    const auto before = QApplication::palette();
    using Appearance = app::AppPreferences::Appearance;
    using SystemContrast = Theme::SystemContrast;
    for (const auto* const accent : {"#308cc6", "#ffff00", "#000000", "#ffffff", "#e95420"}) {
        auto system = before;
        system.setColor(QPalette::Highlight, QColor(QLatin1String(accent)));
        QApplication::setPalette(system);
        for (const auto& [appearance, contrastOf] :
             {std::pair(Appearance::light, SystemContrast::usual),
              std::pair(Appearance::dark, SystemContrast::usual),
              std::pair(Appearance::light, SystemContrast::high),
              std::pair(Appearance::dark, SystemContrast::high)}) {
            preferences.setAppearance(appearance);
            Theme made(preferences);
            made.setSystemContrast(contrastOf);
            const auto& colors = made.colors();
            const auto forText = colors.isHighContrast ? 7.0 : 4.5;
            const auto forMarks = colors.isHighContrast ? 4.5 : 3.0;
            for (const auto& ground : {colors.content, colors.sidebar, colors.raised, colors.field,
                                       colors.selection, colors.hover}) {
                for (const auto& text : {colors.text, colors.secondaryText, colors.danger}) {
                    EXPECT_GE(contrast(text, ground), forText)
                        << accent << (colors.isDark ? " dark " : " light ")
                        << text.name().toStdString() << " on " << ground.name().toStdString();
                }
            }
            EXPECT_GE(contrast(colors.accent, colors.content), forText) << accent;
            EXPECT_GE(contrast(colors.onAccent, colors.accent), 4.5) << accent;
            for (const auto& mark : {colors.border, colors.scrollHandle}) {
                EXPECT_GE(contrast(mark, colors.content), forMarks) << mark.name().toStdString();
                EXPECT_GE(contrast(mark, colors.sidebar), forMarks) << mark.name().toStdString();
            }
        }
    }
    QApplication::setPalette(before);
}

TEST_F(ThemeTest, ChangesForNoSettingThatIsNotItsOwn) {
    QSignalSpy changes(&theme, &Theme::changed);
    preferences.setAutomaticBackupLastSuccess(kNow);
    preferences.setMainBoardSelectedBoardID(inbox->id());
    EXPECT_EQ(changes.count(), 0);
    preferences.setFontSize(20);
    preferences.setBoardSpacing(app::AppPreferences::BoardSpacing::comfortable);
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(ThemeTest, ThePreferenceOverrulesTheSystem) {
    using Appearance = app::AppPreferences::Appearance;
    theme.setSystemAppearance(Theme::SystemAppearance::dark);
    EXPECT_TRUE(theme.colors().isDark);
    preferences.setAppearance(Appearance::light);
    EXPECT_FALSE(theme.colors().isDark);
    preferences.setAppearance(Appearance::system);
    EXPECT_TRUE(theme.colors().isDark);
}

TEST_F(ThemeTest, LeavesTheSystemsLookBehind) {
    const auto palette = QApplication::palette();
    const auto font = QApplication::font();
    preferences.setAppearance(app::AppPreferences::Appearance::dark);
    {
        const auto before = QApplication::palette();
        const Theme second(preferences);
        preferences.setFontSize(20);
        preferences.setAppearance(app::AppPreferences::Appearance::light);
        EXPECT_NE(QApplication::palette(), before);
    }
    preferences.setAppearance(app::AppPreferences::Appearance::system);
    EXPECT_EQ(theme.colors().isDark, palette.color(QPalette::Window).lightness() < 128);
    EXPECT_EQ(QApplication::font().family(), font.family());
}

} // namespace
} // namespace korvex::ui
