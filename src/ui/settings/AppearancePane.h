#pragma once

#include "ui/settings/SettingsPane.h"

class QComboBox;

namespace korvex::ui {

class SegmentedChoice;

/// Light or dark, and the size of all texts. Main thread.
class AppearancePane final : public SettingsPane {
    Q_OBJECT

public:
    AppearancePane(app::AppPreferences& preferences, const Theme& theme);

protected:
    void follow() override;

private:
    app::AppPreferences& m_preferences;
    SegmentedChoice* m_appearance;
    QComboBox* m_size;
    base::Subscription m_settings;
};

} // namespace korvex::ui
