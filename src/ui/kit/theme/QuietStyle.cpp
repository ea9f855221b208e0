#include "ui/kit/theme/QuietStyle.h"

#include "ui/kit/theme/IconSet.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>

namespace korvex::ui {

namespace {

constexpr double kButtonRadius = 5;
constexpr double kCheckBoxRadius = 3;
constexpr int kCheckBoxSize = 16;
constexpr int kMenuIconSize = 16;
constexpr int kMoreButtonSize = 26;

} // namespace

QuietStyle::QuietStyle(const Theme& theme)
    : QProxyStyle(QStringLiteral("fusion")), m_theme(theme) {}

void QuietStyle::installOver(const Theme& theme) {
    if (QApplication::style()->name() == QLatin1String("fusion")) {
        QApplication::setStyle(new QuietStyle(theme)); // the application takes it over
    }
}

void QuietStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    switch (element) {
    case PE_IndicatorCheckBox:
        drawCheckBox(*option, *painter);
        break;
    case PE_PanelButtonCommand:
        drawButton(*option, *painter);
        break;
    case PE_PanelButtonTool:
        drawToolButton(*option, *painter);
        break;
    default:
        painter->setRenderHint(QPainter::Antialiasing, false);
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        break;
    }
    painter->restore();
}

int QuietStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const {
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
        return m_theme.scaled(kCheckBoxSize);
    case PM_SmallIconSize: // of the entries of menus
        return m_theme.scaled(kMenuIconSize);
    case PM_ToolBarExtensionExtent:
        return m_theme.scaled(kMoreButtonSize);
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

void QuietStyle::drawCheckBox(const QStyleOption& option, QPainter& painter) const {
    const auto& colors = m_theme.colors();
    const auto isOn = option.state.testFlag(State_On);
    if (!isOn) {
        drawFrame(option.rect, kCheckBoxRadius, option, painter, colors.content);
        return;
    }
    drawFrame(option.rect, kCheckBoxRadius, option, painter, colors.accent);
    const auto size = option.rect.width() - 4;
    painter.drawPixmap(option.rect.x() + 2, option.rect.y() + 2,
                       IconSet::pixmap(QStringLiteral("check-bold"), colors.onAccent, size,
                                       painter.device()->devicePixelRatio()));
}

void QuietStyle::drawButton(const QStyleOption& option, QPainter& painter) const {
    const auto& colors = m_theme.colors();
    const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(&option);
    const auto isFlat = button && button->features.testFlag(QStyleOptionButton::Flat);
    const auto isDown = option.state.testFlag(State_Sunken);
    const bool isHovered =
        option.state.testFlag(State_MouseOver) && option.state.testFlag(State_Enabled);
    const auto ground = blended(colors.text, colors.content,
                                isDown      ? 0.16
                                : isHovered ? 0.10
                                            : 0.05);
    if (isFlat && !isDown && !isHovered && !option.state.testFlag(State_HasFocus)) {
        return;
    }
    drawFrame(option.rect, kButtonRadius, option, painter, ground);
}

void QuietStyle::drawToolButton(const QStyleOption& option, QPainter& painter) const {
    const auto& colors = m_theme.colors();
    const auto isPressed = option.state.testFlag(State_Sunken) || option.state.testFlag(State_On);
    const bool isHovered =
        option.state.testFlag(State_MouseOver) && option.state.testFlag(State_Enabled);
    painter.setPen(option.state.testFlag(State_HasFocus) ? QPen(colors.accent, 1.5)
                                                         : QPen(Qt::NoPen));
    painter.setBrush(isPressed   ? QBrush(blended(colors.text, colors.content, 0.16))
                     : isHovered ? QBrush(blended(colors.text, colors.content, 0.08))
                                 : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.75, 0.75, -0.75, -0.75), kButtonRadius,
                            kButtonRadius);
}

void QuietStyle::drawFrame(const QRectF& rect, double radius, const QStyleOption& option,
                           QPainter& painter, const QColor& ground) const {
    const auto& colors = m_theme.colors();
    const auto isEnabled = option.state.testFlag(State_Enabled);
    const auto hasFocus = option.state.testFlag(State_HasFocus);
    painter.setOpacity(isEnabled ? 1 : 0.5);
    painter.setPen(QPen(hasFocus ? colors.accent : blended(colors.text, colors.content, 0.30),
                        hasFocus ? 1.5 : 1));
    painter.setBrush(ground);
    painter.drawRoundedRect(rect.adjusted(0.75, 0.75, -0.75, -0.75), radius, radius);
}

} // namespace korvex::ui
