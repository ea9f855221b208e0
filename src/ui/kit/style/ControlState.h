#pragma once

#include "ui/kit/theme/Shapes.h"

#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace korvex::ui {

/// What the flags of an option mean for the look of a control: one that is disabled is neither
/// under the pointer nor pressed.
class ControlState final {
public:
    explicit ControlState(const QStyleOption& option) : m_state(option.state) {}

    bool isEnabled() const { return m_state.testFlag(QStyle::State_Enabled); }
    bool isHovered() const { return isEnabled() && m_state.testFlag(QStyle::State_MouseOver); }
    bool isPressed() const { return isEnabled() && m_state.testFlag(QStyle::State_Sunken); }
    bool hasFocus() const { return m_state.testFlag(QStyle::State_HasFocus); }
    Tint tint() const {
        return isPressed() ? Tint::pressed : isHovered() ? Tint::hovered : Tint::rest;
    }

private:
    QStyle::State m_state;
};

/// As long as it lives, what is drawn of a disabled control is faint.
class FadedWhenDisabled final {
public:
    FadedWhenDisabled(QPainter& painter, const ControlState& state)
        : m_painter(painter), m_before(painter.opacity()) {
        if (!state.isEnabled()) {
            painter.setOpacity(m_before * kDisabledOpacity);
        }
    }
    ~FadedWhenDisabled() { m_painter.setOpacity(m_before); }
    FadedWhenDisabled(const FadedWhenDisabled&) = delete;
    FadedWhenDisabled& operator=(const FadedWhenDisabled&) = delete;

private:
    QPainter& m_painter;
    double m_before;
};

} // namespace korvex::ui
