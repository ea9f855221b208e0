#pragma once

#include "ui/kit/theme/Theme.h"

#include <QProxyStyle>

namespace korvex::ui {

/// Draws a control as it looks in a state that it is not in, so that one picture shows all of them.
class ShownState final : public QProxyStyle {
public:
    ShownState(const Theme& theme, State state, QObject* parent);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;

private:
    State m_state;
};

} // namespace korvex::ui
