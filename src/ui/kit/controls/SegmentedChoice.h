#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QButtonGroup;

namespace korvex::ui {

/// One of a few, all of them in sight: side by side, or where there is no room for their words one
/// below the other. The keyboard and screen readers know a group
/// of radio buttons: one place in the tab order, and the arrows choose. Main thread.
class SegmentedChoice final : public QWidget {
    Q_OBJECT

public:
    SegmentedChoice(const QString& name, const QStringList& titles, const Theme& theme,
                    QWidget* parent = nullptr);

    int chosen() const;
    void choose(int index);

Q_SIGNALS:
    /// The user or the program has chosen another.
    void chosenChanged(int index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();

    const Theme& m_theme;
    QButtonGroup* m_segments;
};

} // namespace korvex::ui
