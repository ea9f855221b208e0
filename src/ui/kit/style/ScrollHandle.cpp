#include "ui/kit/style/ScrollHandle.h"

#include "ui/kit/theme/Shapes.h"

#include <QAbstractScrollArea>
#include <QEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>

#include <algorithm>

namespace korvex::ui {

namespace {

QWidget* areaOf(const QScrollBar& bar) {
    for (auto* widget = bar.parentWidget(); widget; widget = widget->parentWidget()) {
        if (qobject_cast<QAbstractScrollArea*>(widget)) {
            return widget;
        }
    }
    return nullptr;
}

/// The handle within the bar, as if it ran from left to right or from top to bottom.
struct Slider {
    int start;
    int length;
};

Slider sliderOf(const QStyleOptionSlider& option, int length, int shortest) {
    const auto range = static_cast<qint64>(option.maximum) - option.minimum;
    if (range <= 0) {
        return {0, length};
    }
    const auto seen = static_cast<qint64>(option.pageStep);
    const auto slider =
        std::clamp(static_cast<int>(seen * length / std::max<qint64>(1, range + seen)),
                   std::min(shortest, length), length);
    return {QStyle::sliderPositionFromValue(option.minimum, option.maximum, option.sliderPosition,
                                            length - slider, option.upsideDown),
            slider};
}

} // namespace

ScrollHandle& ScrollHandle::of(QScrollBar& bar, const Theme& theme) {
    auto* const found = bar.findChild<ScrollHandle*>(QString(), Qt::FindDirectChildrenOnly);
    return found ? *found : *new ScrollHandle(bar, theme);
}

ScrollHandle::ScrollHandle(QScrollBar& bar, const Theme& theme)
    : QObject(&bar), m_bar(bar), m_theme(theme), m_rest(this), m_fading(this) {
    m_rest.setSingleShot(true);
    m_rest.setInterval(kScrollHandleShown);
    m_fading.setStartValue(1.0);
    m_fading.setEndValue(0.0);
    connect(&m_rest, &QTimer::timeout, this, &ScrollHandle::fade);
    connect(&m_fading, &QVariantAnimation::valueChanged, &bar, [&bar] { bar.update(); });
    connect(&bar, &QScrollBar::valueChanged, this, &ScrollHandle::come);
    connect(&bar, &QScrollBar::rangeChanged, this, &ScrollHandle::come);
    connect(&theme, &Theme::changed, this, &ScrollHandle::come);
    bar.installEventFilter(this);
    if (auto* const area = areaOf(bar)) {
        area->installEventFilter(this);
    }
}

double ScrollHandle::opacity() const {
    return stays() || m_isShown                             ? 1
           : m_fading.state() == QVariantAnimation::Running ? m_fading.currentValue().toDouble()
                                                            : 0;
}

bool ScrollHandle::stays() const {
    return m_theme.motion(Motion::calm) == 0 || m_theme.colors().isHighContrast;
}

bool ScrollHandle::isWanted() const {
    return m_bar.isSliderDown() || m_bar.underMouse();
}

void ScrollHandle::come() {
    m_fading.stop();
    m_isShown = true;
    m_bar.update();
    if (isWanted()) {
        m_rest.stop();
    } else {
        m_rest.start();
    }
}

void ScrollHandle::fade() {
    if (isWanted() || stays()) {
        return;
    }
    m_isShown = false;
    m_fading.setDuration(m_theme.motion(Motion::calm));
    m_fading.start();
}

bool ScrollHandle::eventFilter(QObject* watched, QEvent* event) {
    const auto isOfBar = watched == &m_bar && (event->type() == QEvent::Leave ||
                                               event->type() == QEvent::MouseButtonRelease ||
                                               event->type() == QEvent::Show);
    if (isOfBar || event->type() == QEvent::Enter) {
        come();
    }
    return false;
}

void ScrollHandle::paint(QPainter& painter, const QStyleOptionSlider& option, const QWidget* bar,
                         const Theme& theme) {
    const auto* const handle =
        bar ? bar->findChild<const ScrollHandle*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
    const auto opacity = handle ? handle->opacity() : 1.0;
    if (opacity <= 0 || option.maximum <= option.minimum) {
        return;
    }
    const auto isHeld = option.state.testFlag(QStyle::State_Sunken) ||
                        option.state.testFlag(QStyle::State_MouseOver);
    const auto thickness = theme.extent(isHeld ? Extent::scrollHandleHeld : Extent::scrollHandle);
    const auto margin = theme.space(Space::hair);
    auto place = partOf(option, QStyle::SC_ScrollBarSlider, theme);
    if (option.orientation == Qt::Vertical) {
        place.adjust(0, margin, 0, -margin);
        // At the edge, and growing away from it.
        if (option.direction == Qt::RightToLeft) {
            place.setLeft(place.left() + margin);
            place.setWidth(thickness);
        } else {
            place.setRight(place.right() - margin);
            place.setLeft(place.right() + 1 - thickness);
        }
    } else {
        place.adjust(margin, 0, -margin, -margin);
        place.setTop(place.bottom() + 1 - thickness);
    }
    painter.save();
    painter.setOpacity(painter.opacity() * opacity);
    Shapes::paintBox(painter, place, thickness / 2.0, theme.colors().scrollHandle, QColor());
    painter.restore();
}

QRect ScrollHandle::partOf(const QStyleOptionSlider& option, QStyle::SubControl part,
                           const Theme& theme) {
    const auto isUpright = option.orientation == Qt::Vertical;
    const auto length = isUpright ? option.rect.height() : option.rect.width();
    const auto slider = sliderOf(option, length, theme.extent(Extent::control));
    const auto along = [&](int start, int count) {
        const auto place =
            isUpright
                ? QRect(option.rect.left(), option.rect.top() + start, option.rect.width(), count)
                : QRect(option.rect.left() + start, option.rect.top(), count, option.rect.height());
        return QStyle::visualRect(option.direction, option.rect, place);
    };
    const auto end = slider.start + slider.length;
    switch (part) {
    case QStyle::SC_ScrollBarSlider:
        return along(slider.start, slider.length);
    case QStyle::SC_ScrollBarSubPage:
        return along(0, slider.start);
    case QStyle::SC_ScrollBarAddPage:
        return along(end, length - end);
    case QStyle::SC_ScrollBarGroove:
        return option.rect;
    default:
        return {};
    }
}

int ScrollHandle::width(const Theme& theme) {
    return theme.extent(Extent::scrollHandleHeld) + 2 * theme.space(Space::hair);
}

} // namespace korvex::ui
