#pragma once

#include "ui/kit/theme/Theme.h"

#include <QLabel>

namespace korvex::ui {

/// Says why something was refused, beside what that was; takes no room while there is nothing to
/// say. Screen readers are told at once. Main thread.
class RefusalLabel final : public QLabel {
    Q_OBJECT

public:
    RefusalLabel(const Theme& theme, QWidget* parent);

    /// An empty text takes back what was said.
    void say(const QString& why);

private:
    void applyTheme();

    const Theme& m_theme;
};

} // namespace korvex::ui
