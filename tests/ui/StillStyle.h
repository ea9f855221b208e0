#pragma once

#include <QProxyStyle>

namespace korvex::tests {

/// A style in which nothing moves: what would be animated is at its end at once.
class StillStyle final : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        return hint == SH_Widget_Animation_Duration
                   ? 0
                   : QProxyStyle::styleHint(hint, option, widget, result);
    }
};

} // namespace korvex::tests
