#include "ui/kit/style/QuietStyle.h"

#include "ui/kit/style/ButtonDrawing.h"
#include "ui/kit/style/FieldDrawing.h"
#include "ui/kit/style/ListDrawing.h"
#include "ui/kit/style/MenuDrawing.h"
#include "ui/kit/style/PopupPlace.h"
#include "ui/kit/style/ScrollHandle.h"
#include "ui/kit/style/StyleMetrics.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>
#include <QStyledItemDelegate>

namespace korvex::ui {

namespace {

/// Qt has no public names for the windows of a combo box's list and of a tip.
bool isChoiceList(const QWidget* widget) {
    return widget && widget->inherits("QComboBoxPrivateContainer");
}

bool isTip(const QWidget* widget) {
    return widget && widget->inherits("QTipLabel");
}

std::optional<Shapes::Caret> caretOf(QStyle::PrimitiveElement element) {
    switch (element) {
    case QStyle::PE_IndicatorArrowUp:
        return Shapes::Caret::up;
    case QStyle::PE_IndicatorArrowDown:
        return Shapes::Caret::down;
    case QStyle::PE_IndicatorArrowLeft:
        return Shapes::Caret::left;
    case QStyle::PE_IndicatorArrowRight:
        return Shapes::Caret::right;
    default:
        return std::nullopt;
    }
}

/// The option as what Qt says it is; the elements that ask know which.
template <typename Option>
const Option& as(const QStyleOption& option) {
    return static_cast<const Option&>(option);
}

QString plainStyle() {
    return QStringLiteral("fusion");
}

} // namespace

InstalledStyle::InstalledStyle(const Theme& theme) {
    QApplication::setStyle(new QuietStyle(theme)); // the application takes it over
}

InstalledStyle::~InstalledStyle() {
    QApplication::setStyle(plainStyle());
}

QuietStyle::QuietStyle(const Theme& theme)
    : QProxyStyle(plainStyle()), m_theme(theme), m_popups(new PopupPlace(this)) {}

void QuietStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (auto* const bar = qobject_cast<QScrollBar*>(widget)) {
        bar->setAttribute(Qt::WA_OpaquePaintEvent, false);
        ScrollHandle::of(*bar, m_theme);
    } else if (auto* const choice = qobject_cast<QComboBox*>(widget)) {
        // Qt's own rows of such a list are drawn without the style.
        if (!qobject_cast<QStyledItemDelegate*>(choice->itemDelegate())) {
            choice->setItemDelegate(new QStyledItemDelegate(choice));
        }
    } else if (auto* const field = qobject_cast<QLineEdit*>(widget)) {
        field->setAlignment(lineStart()); // Qt takes the direction of the keys for an empty one
    } else if (qobject_cast<QMenu*>(widget)) {
        m_popups->watch(*widget);
    } else if (isChoiceList(widget)) {
        m_popups->watch(*widget);
        for (auto* const list : widget->findChildren<QAbstractItemView*>()) {
            auto own = list->palette();
            own.setColor(QPalette::Base, Qt::transparent); // the panel is seen through it
            list->setPalette(own);
        }
    } else if (isTip(widget)) {
        widget->setFont(m_theme.smallFont());
        widget->setPalette(m_theme.colors().palette());
    }
}

void QuietStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    if (!drawsPrimitive(element, *option, *painter, widget)) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

bool QuietStyle::drawsPrimitive(PrimitiveElement element, const QStyleOption& option,
                                QPainter& painter, const QWidget* widget) const {
    const auto& colors = m_theme.colors();
    switch (element) {
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        ButtonDrawing::paintCheckBox(painter, option, m_theme);
        return true;
    case PE_IndicatorRadioButton:
        ButtonDrawing::paintRadio(painter, option, m_theme);
        return true;
    case PE_PanelButtonTool:
        ButtonDrawing::paintTool(painter, option, m_theme);
        return true;
    case PE_PanelLineEdit:
        if (as<QStyleOptionFrame>(option).lineWidth <= 0) {
            return false; // a part of another control
        }
        FieldDrawing::paintField(painter, option, m_theme);
        return true;
    case PE_FrameFocusRect:
        if (option.state.testFlag(State_HasFocus)) {
            Shapes::paintRing(painter, option.rect, m_theme.radius(Radius::medium), colors.accent);
        }
        return true;
    case PE_Frame:
        if (isChoiceList(widget)) {
            MenuDrawing::paintPanel(painter, option.rect, popupRadius(widget), m_theme);
        } else {
            Shapes::paintBox(painter, option.rect, m_theme.radius(Radius::small), QColor(),
                             colors.hairline);
        }
        return true;
    case PE_PanelMenu:
    case PE_PanelTipLabel:
        MenuDrawing::paintPanel(painter, option.rect, popupRadius(widget), m_theme);
        return true;
    case PE_PanelItemViewItem:
        ListDrawing::paintRow(painter, as<QStyleOptionViewItem>(option), m_theme);
        return true;
    case PE_IndicatorToolBarSeparator:
        ListDrawing::paintToolBarSeparator(painter, option, m_theme);
        return true;
    case PE_FrameMenu: // belongs to the panel
    case PE_PanelItemViewRow:
    case PE_PanelScrollAreaCorner:
        return true;
    default:
        break;
    }
    if (const auto caret = caretOf(element)) {
        Shapes::paintCaret(painter, option.rect, *caret, colors.secondaryText, m_theme);
        return true;
    }
    return false;
}

void QuietStyle::drawItemText(QPainter* painter, const QRect& rect, int flags,
                              const QPalette& palette, bool isEnabled, const QString& text,
                              QPalette::ColorRole role) const {
    QProxyStyle::drawItemText(painter, rect, flags, palette, isEnabled, isolated(text), role);
}

void QuietStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    if (!drawsControl(element, *option, *painter, widget)) {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

bool QuietStyle::drawsControl(ControlElement element, const QStyleOption& option, QPainter& painter,
                              const QWidget* widget) const {
    switch (element) {
    case CE_PushButton: {
        // Without Qt's ring, which comes only after a key was pressed.
        proxy()->drawControl(CE_PushButtonBevel, &option, &painter, widget);
        auto label = as<QStyleOptionButton>(option);
        label.rect = proxy()->subElementRect(SE_PushButtonContents, &option, widget);
        proxy()->drawControl(CE_PushButtonLabel, &label, &painter, widget);
        return true;
    }
    case CE_PushButtonBevel: {
        const auto& button = as<QStyleOptionButton>(option);
        ButtonDrawing::paintPush(painter, button, ButtonDrawing::weightOf(button, widget), m_theme);
        return true;
    }
    case CE_PushButtonLabel: {
        auto label = as<QStyleOptionButton>(option);
        const auto words =
            ButtonDrawing::wordsOf(label, ButtonDrawing::weightOf(label, widget), m_theme.colors());
        if (words.isValid()) {
            label.palette.setColor(QPalette::ButtonText, words);
        }
        QProxyStyle::drawControl(element, &label, &painter, widget);
        return true;
    }
    case CE_CheckBox:
    case CE_RadioButton: {
        const auto isRadio = element == CE_RadioButton;
        auto part = as<QStyleOptionButton>(option);
        part.rect = proxy()->subElementRect(
            isRadio ? SE_RadioButtonIndicator : SE_CheckBoxIndicator, &option, widget);
        proxy()->drawPrimitive(isRadio ? PE_IndicatorRadioButton : PE_IndicatorCheckBox, &part,
                               &painter, widget);
        part.rect = proxy()->subElementRect(isRadio ? SE_RadioButtonContents : SE_CheckBoxContents,
                                            &option, widget);
        proxy()->drawControl(isRadio ? CE_RadioButtonLabel : CE_CheckBoxLabel, &part, &painter,
                             widget);
        part.rect = ButtonDrawing::ringOf(as<QStyleOptionButton>(option), m_theme);
        proxy()->drawPrimitive(PE_FrameFocusRect, &part, &painter, widget);
        return true;
    }
    case CE_ItemViewItem: {
        const auto& row = as<QStyleOptionViewItem>(option);
        proxy()->drawPrimitive(PE_PanelItemViewItem, &row, &painter, widget);
        auto content = ListDrawing::contentOf(row);
        if (widget && isChoiceList(widget->window())) {
            content.state.setFlag(State_HasFocus, false); // the tint walks, as in a menu
        }
        QProxyStyle::drawControl(element, &content, &painter, widget);
        return true;
    }
    case CE_MenuItem:
        MenuDrawing::paintItem(painter, as<QStyleOptionMenuItem>(option), m_theme);
        return true;
    case CE_ProgressBar:
        FieldDrawing::paintProgress(painter, as<QStyleOptionProgressBar>(option), m_theme);
        return true;
    case CE_Splitter:
        ListDrawing::paintSplitter(painter, option, m_theme);
        return true;
    case CE_MenuEmptyArea:
    case CE_ToolBar:
        return true;
    default:
        return false;
    }
}

void QuietStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
    switch (control) {
    case CC_ScrollBar:
        ScrollHandle::paint(*painter, as<QStyleOptionSlider>(*option), widget, m_theme);
        break;
    case CC_ComboBox:
        FieldDrawing::paintComboBox(*painter, as<QStyleOptionComboBox>(*option), m_theme);
        break;
    case CC_SpinBox:
        FieldDrawing::paintSpinBox(*painter, as<QStyleOptionSpinBox>(*option), m_theme);
        break;
    case CC_ToolButton:
        drawToolButton(as<QStyleOptionToolButton>(*option), *painter, widget);
        break;
    default:
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        break;
    }
}

void QuietStyle::drawToolButton(const QStyleOptionToolButton& option, QPainter& painter,
                                const QWidget* widget) const {
    proxy()->drawPrimitive(PE_PanelButtonTool, &option, &painter, widget);
    auto label = option;
    label.rect = ButtonDrawing::labelOf(option, m_theme);
    proxy()->drawControl(CE_ToolButtonLabel, &label, &painter, widget);
    if (ButtonDrawing::hasCaret(option)) {
        Shapes::paintCaret(painter, ButtonDrawing::caretOf(option, m_theme), Shapes::Caret::down,
                           m_theme.colors().secondaryText, m_theme);
    }
}

QRect QuietStyle::subElementRect(SubElement element, const QStyleOption* option,
                                 const QWidget* widget) const {
    const auto inside = [option](int horizontal, int vertical) {
        return option->rect.adjusted(horizontal, vertical, -horizontal, -vertical);
    };
    switch (element) {
    case SE_PushButtonContents:
    case SE_PushButtonFocusRect:
        return option->rect;
    case SE_LineEditContents:
        return as<QStyleOptionFrame>(*option).lineWidth <= 0
                   ? QProxyStyle::subElementRect(element, option, widget)
                   : inside(m_theme.space(Space::small), 1);
    case SE_ShapedFrameContents:
        return isChoiceList(widget)
                   ? inside(m_theme.space(Space::small), m_theme.space(Space::small))
                   : QProxyStyle::subElementRect(element, option, widget);
    case SE_CheckBoxIndicator:
    case SE_CheckBoxContents:
    case SE_RadioButtonIndicator:
    case SE_RadioButtonContents: {
        auto inner = as<QStyleOptionButton>(*option);
        inner.rect = inside(m_theme.space(Space::small), 0); // the ring around both has room
        return QProxyStyle::subElementRect(element, &inner, widget);
    }
    default:
        return QProxyStyle::subElementRect(element, option, widget);
    }
}

QRect QuietStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                 SubControl part, const QWidget* widget) const {
    switch (control) {
    case CC_ScrollBar:
        return ScrollHandle::partOf(as<QStyleOptionSlider>(*option), part, m_theme);
    case CC_ComboBox:
        return FieldDrawing::partOfComboBox(as<QStyleOptionComboBox>(*option), part, m_theme);
    case CC_SpinBox:
        return FieldDrawing::partOfSpinBox(as<QStyleOptionSpinBox>(*option), part, m_theme);
    default:
        return QProxyStyle::subControlRect(control, option, part, widget);
    }
}

QSize QuietStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                   const QSize& content, const QWidget* widget) const {
    return StyleMetrics::size(type, option, content,
                              QProxyStyle::sizeFromContents(type, option, content, widget),
                              m_theme);
}

int QuietStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const {
    const auto own = StyleMetrics::metric(metric, m_theme);
    return own ? *own : QProxyStyle::pixelMetric(metric, option, widget);
}

int QuietStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* result) const {
    if (hint == SH_Menu_Mask || hint == SH_ToolTip_Mask) {
        auto* const mask = qstyleoption_cast<QStyleHintReturnMask*>(result);
        if (mask && option) {
            mask->region = MenuDrawing::shapeOf(option->rect, popupRadius(widget));
        }
        return mask ? 1 : 0;
    }
    const auto own = StyleMetrics::hint(hint, m_theme);
    return own ? *own : QProxyStyle::styleHint(hint, option, widget, result);
}

double QuietStyle::popupRadius(const QWidget* popup) const {
    return m_theme.radius(isTip(popup) ? Radius::medium : Radius::large);
}

QIcon QuietStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                               const QWidget* widget) const {
    return icon == SP_LineEditClearButton
               ? IconSet::icon(QStringLiteral("x"), m_theme.colors().secondaryText)
               : QProxyStyle::standardIcon(icon, option, widget);
}

QPixmap QuietStyle::generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                        const QStyleOption* option) const {
    // The tint of what is chosen lies under the icon, not over it.
    return mode == QIcon::Selected ? pixmap
                                   : QProxyStyle::generatedIconPixmap(mode, pixmap, option);
}

} // namespace korvex::ui
