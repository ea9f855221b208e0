#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QLabel;

namespace korvex::ui {

/// Says in the middle of a page why there is nothing on it, and quietly what would change that.
/// Hidden while it has nothing to say; it is in nobody's way.
class PageHint final : public QWidget {
    Q_OBJECT

public:
    explicit PageHint(const Theme& theme);

    /// `next` may be empty, and so may both.
    void say(const QString& what, const QString& next);

    /// As wide as lines are to be at most.
    QSize sizeHint() const override;

private:
    void applyTheme();

    const Theme& m_theme;
    QLabel* m_what;
    QLabel* m_next;
};

} // namespace korvex::ui
