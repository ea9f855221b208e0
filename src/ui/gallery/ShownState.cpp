#include "ui/gallery/ShownState.h"

#include "ui/kit/style/QuietStyle.h"

#include <QStyleOption>

namespace korvex::ui {

namespace {

/// As long as it lives, an option says that its control is in these states too. Who draws made the
/// option for that alone; it is of a kind that only the style knows, and cannot be copied here.
class Added final {
public:
    Added(const QStyleOption& option, QStyle::State state)
        : m_option(const_cast<QStyleOption&>(option)), m_before(option.state) {
        m_option.state |= state;
    }
    ~Added() { m_option.state = m_before; }
    Added(const Added&) = delete;
    Added& operator=(const Added&) = delete;

private:
    QStyleOption& m_option;
    QStyle::State m_before;
};

} // namespace

ShownState::ShownState(const Theme& theme, State state, QObject* parent)
    : QProxyStyle(new QuietStyle(theme)), m_state(state) {
    setParent(parent);
}

void ShownState::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    const Added added(*option, m_state);
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void ShownState::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    const Added added(*option, m_state);
    QProxyStyle::drawControl(element, option, painter, widget);
}

void ShownState::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
    const Added added(*option, m_state);
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

} // namespace korvex::ui
