#pragma once

#include "ui/kit/overlays/Popover.h"

namespace korvex::ui {

/// Asks, in the middle of the window, before something is done that cannot be undone; all else in
/// the window is quiet until that is answered. The keyboard starts on the button that does nothing.
class ConfirmationSheet final : public Popover {
    Q_OBJECT

public:
    ConfirmationSheet(const QString& message, const QString& action, const Theme& theme,
                      QWidget* window);

    void ask();

Q_SIGNALS:
    void confirmed();

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace korvex::ui
