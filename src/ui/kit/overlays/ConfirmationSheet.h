#pragma once

#include "ui/kit/overlays/Popover.h"

class QPushButton;

namespace korvex::ui {

/// Asks, in the middle of the window, before something is done that cannot be undone; all else in
/// the window is quiet until that is answered. The keyboard starts on the button that does nothing.
class ConfirmationSheet final : public Popover {
    Q_OBJECT

public:
    ConfirmationSheet(const QString& message, const QString& action, const Theme& theme,
                      QWidget* window);

    /// Asks which of two things is to be done, none of which loses anything: this one in the place
    /// of the button that does nothing. The keyboard starts on the other one.
    void offerInstead(const QString& otherwise);
    void ask();

Q_SIGNALS:
    void confirmed();
    /// The other button was pressed; not when the sheet was only closed.
    void declined();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QPushButton* m_cancel;
    QPushButton* m_confirm;
};

} // namespace korvex::ui
