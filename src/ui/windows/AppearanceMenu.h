#pragma once

#include "app/AppPreferences.h"

#include <QMenu>

namespace korvex::ui {

/// Appearance, font size and spacing, as entries of a menu; each takes effect at once.
class AppearanceMenu final : public QMenu {
    Q_OBJECT

public:
    explicit AppearanceMenu(app::AppPreferences& preferences, QWidget* parent = nullptr);

private:
    void fill();

    app::AppPreferences& m_preferences;
};

} // namespace korvex::ui
