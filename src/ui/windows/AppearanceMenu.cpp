#include "ui/windows/AppearanceMenu.h"

#include "ui/settings/SettingTitles.h"

#include <QActionGroup>
#include <QLocale>

namespace korvex::ui {

AppearanceMenu::AppearanceMenu(app::AppPreferences& preferences, QWidget* parent)
    : QMenu(tr("Appearance"), parent), m_preferences(preferences) {
    connect(this, &QMenu::aboutToShow, this, &AppearanceMenu::fill);
}

void AppearanceMenu::fill() {
    clear();
    auto* group = new QActionGroup(this);
    const auto add = [&](QMenu& menu, const QString& text, auto&& choose) {
        auto* const action = menu.addAction(text);
        action->setCheckable(true);
        action->setActionGroup(group);
        connect(action, &QAction::triggered, this, choose);
        return action;
    };
    for (const auto& [appearance, title] : appearanceTitles()) {
        add(*this, title, [this, chosen = appearance] {
            m_preferences.setAppearance(chosen);
        })->setChecked(m_preferences.appearance() == appearance);
    }
    addSeparator();
    group = new QActionGroup(this);
    for (const auto& [spacing, title] : spacingTitles()) {
        add(*this, title, [this, chosen = spacing] {
            m_preferences.setBoardSpacing(chosen);
        })->setChecked(m_preferences.boardSpacing() == spacing);
    }
    addSeparator();
    group = new QActionGroup(this);
    auto* const sizes = addMenu(tr("Font size"));
    for (const auto size : app::AppPreferences::kFontSizes) {
        add(*sizes, QLocale().toString(size), [this, size] {
            m_preferences.setFontSize(size);
        })->setChecked(m_preferences.fontSize() == size);
    }
}

} // namespace korvex::ui
