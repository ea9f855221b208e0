#include "ui/kit/theme/Theme.h"

#include "ui/WindowFixture.h"
#include "ui/kit/overlays/ErrorBanner.h"

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
        for (const auto& [appearance, contrastOf] :
             {std::pair(Appearance::light, SystemContrast::usual),
              std::pair(Appearance::dark, SystemContrast::usual),
              std::pair(Appearance::light, SystemContrast::high),
              std::pair(Appearance::dark, SystemContrast::high)}) {
            preferences.setAppearance(appearance); // with which the theme at hand sets its own
            QApplication::setPalette(system);
            Theme made(preferences);
            made.setSystem({.contrast = contrastOf});
            const auto& colors = made.colors();
            const auto forText = colors.isHighContrast ? 7.0 : 4.5;
            const auto forMarks = colors.isHighContrast ? 4.5 : 3.0;
            const auto where = std::string(accent) + (colors.isDark ? " dark" : " light");
            for (const auto& ground :
                 {colors.content, colors.sidebar, colors.raised, colors.field, colors.selection}) {
                for (const auto& seen : {ground, colors.tinted(ground, Tint::hovered),
                                         colors.tinted(ground, Tint::pressed)}) {
                    for (const auto& text :
                         {colors.text, colors.secondaryText, colors.accent, colors.danger}) {
                        EXPECT_GE(contrast(text, seen), forText)
                            << where << text.name().toStdString() << " on "
                            << seen.name().toStdString();
                    }
                }
            }
            EXPECT_GE(contrast(colors.onAccent, colors.accent), forText) << where;
            QWidget window;
            ErrorBanner banner(made, &window);
            banner.say({.text = QStringLiteral("The disk is full.")});
            EXPECT_GE(contrast(banner.palette().color(QPalette::WindowText),
                               banner.palette().color(QPalette::Window)),
                      forText)
                << where;
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
    int changes = 0;
    QObject::connect(&theme, &Theme::changed, &theme, [&] { ++changes; });
    const Theme::System system{.appearance = Theme::SystemAppearance::dark,
                               .contrast = Theme::SystemContrast::high,
                               .motion = Theme::SystemMotion::still};
    theme.setSystem(system);
    theme.setSystem(system);
    EXPECT_EQ(changes, 1) << "the windows are drawn anew once";
    EXPECT_TRUE(theme.colors().isDark && theme.colors().isHighContrast);
    EXPECT_EQ(theme.motion(Motion::calm), 0);
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
