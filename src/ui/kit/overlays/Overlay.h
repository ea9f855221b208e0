#pragma once

#include "ui/kit/theme/Theme.h"

#include <QObject>
#include <QWidget>

#include <optional>

namespace korvex::ui {

/// Keeps a widget over another, in the middle of its width and as large as it asks for, wherever
/// that goes: what comes and goes there moves nothing under the pointer. The widget is a child of
/// the other, or becomes one of the other's parent. Main thread.
class Overlay final : public QObject {
public:
    enum class Place {
        /// Along the upper edge.
        head,
        /// At the foot, for what is to be read now.
        foot,
        /// In the middle, for what says why there is nothing else.
        middle,
    };
    /// Both live as long as this. `margin` is kept free around it, none where it is absent.
    Overlay(QWidget& over, QWidget& ground, Place place, const Theme& theme,
            std::optional<Space> margin = {});

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QRect room() const;
    void arrange();

    QWidget& m_over;
    QWidget& m_ground;
    Place m_place;
    const Theme& m_theme;
    std::optional<Space> m_margin;
};

} // namespace korvex::ui
