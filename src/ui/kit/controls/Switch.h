#pragma once

#include "ui/kit/theme/Theme.h"

#include <QCheckBox>
#include <QVariantAnimation>

namespace korvex::ui {

/// What is on or off at once, without a button that confirms it: words, and behind them a track
/// with a knob. To screen readers and the keyboard it is a check box. Main thread.
class Switch final : public QCheckBox {
    Q_OBJECT

public:
    Switch(const QString& text, const Theme& theme, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& place) const override { return rect().contains(place); }

private:
    void slide(bool isOn);
    QSize trackSize() const;

    const Theme& m_theme;
    /// Where the knob is, from 0, off, to 1.
    QVariantAnimation m_knob;
};

} // namespace korvex::ui
