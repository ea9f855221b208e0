#pragma once

#include "ui/kit/theme/Theme.h"

#include <QFrame>

class QLabel;
class QPushButton;

namespace korvex::ui {

/// Says at the foot of an edited row why something was refused, and offers to give up what was
/// typed. It lies over the rows beside: none of them moves when it comes and goes. Main thread.
class RowRefusal final : public QFrame {
    Q_OBJECT

public:
    RowRefusal(const Theme& theme, QWidget* viewport);

    void setMessage(const QString& message);
    /// Stands under this place in the viewport, above it where there is no room.
    void placeAt(const QRect& row);

Q_SIGNALS:
    void discarded();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();

    const Theme& m_theme;
    QLabel* m_text;
    QPushButton* m_discard;
};

} // namespace korvex::ui
