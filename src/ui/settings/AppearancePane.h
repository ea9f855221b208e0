#pragma once

#include "ui/settings/SettingsPane.h"

namespace korvex::ui {

class ListChoice;
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
    ListChoice* m_size;
    base::Subscription m_settings;
};

} // namespace korvex::ui
