#include "ui/settings/AppearancePane.h"

#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/settings/SettingTitles.h"

#include <QLocale>
#include <QSignalBlocker>

namespace korvex::ui {

AppearancePane::AppearancePane(app::AppPreferences& preferences, const Theme& theme)
    : SettingsPane(tr("Appearance"), theme),
      m_preferences(preferences),
      m_appearance(new SegmentedChoice(tr("Theme"), titlesOf(appearanceTitles()), theme)),
      m_size(new ListChoice) {
    for (const auto size : app::AppPreferences::kFontSizes) {
        m_size->addItem(QLocale().toString(size), size);
    }
    auto& group = addGroup();
    group.addRow(tr("Theme"), m_appearance).setNote(tr("System follows the desktop."));
    group.addRow(tr("Font size"), m_size).setNote(tr("Of all texts."));
    connect(m_appearance, &SegmentedChoice::chosenChanged, this, [this](int index) {
        m_preferences.setAppearance(appearanceTitles().at(static_cast<std::size_t>(index)).value);
    });
    connect(m_size, &QComboBox::activated, this,
            [this] { m_preferences.setFontSize(m_size->currentData().toInt()); });
    m_settings =
        m_preferences.didChange().connect([this](app::AppPreferences::Property) { followSoon(); });
}

void AppearancePane::follow() {
    const QSignalBlocker quiet(m_appearance); // nobody has chosen anything
    m_appearance->choose(placeOf(appearanceTitles(), m_preferences.appearance()));
    m_size->setCurrentIndex(m_size->findData(m_preferences.fontSize()));
}

} // namespace korvex::ui
