#pragma once

#include "app/UserDefaults.h"

#include <QSize>

class QWidget;

namespace korvex::ui {

/// Keeps where a window stands, from one start to the next. Main thread; both outlive it.
class WindowPlace {
public:
    /// `key` is that of the settings, and lives for ever.
    WindowPlace(QWidget& window, app::UserDefaults& defaults, const char* key);

    /// Puts the window where it was saved last; the first time only gives it this size.
    void restore(QSize first);
    void save();

private:
    QWidget& m_window;
    app::UserDefaults& m_defaults;
    const char* m_key;
};

/// Shows a window over all others and gives it the keyboard, also when it is minimised.
void bringForward(QWidget& window);

} // namespace korvex::ui
