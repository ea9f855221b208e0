#pragma once

#include "ui/kit/overlays/Popover.h"

class QLineEdit;
class QPushButton;

namespace korvex::ui {

class RefusalLabel;

/// Asks for the target of a link. Return stores, Escape gives up; what cannot be a target stays
/// open with the reason.
class LinkPopover final : public Popover {
    Q_OBJECT

public:
    /// `target` is that of the link that is there, or empty.
    LinkPopover(const QString& target, const Theme& theme, QWidget* window);

    /// A press outside stores what was changed.
    void dismiss() override;

Q_SIGNALS:
    /// An empty target asks to take the link away.
    void chosen(const QString& target);
    void openRequested(const QString& target);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void layOut();
    void save();
    void showTarget();
    void showError(const QString& message);

    QString m_original;
    QLineEdit* m_target;
    RefusalLabel* m_error;
    QPushButton* m_open;
    QPushButton* m_remove;
    QPushButton* m_save;
};

} // namespace korvex::ui
