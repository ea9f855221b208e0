#include "ui/kit/style/StyleMetrics.h"

#include "ui/kit/style/ButtonDrawing.h"
#include "ui/kit/style/MenuDrawing.h"
#include "ui/kit/style/ScrollHandle.h"

#include <QFrame>
#include <QStyleOption>

#include <algorithm>

namespace korvex::ui {

std::optional<int> StyleMetrics::metric(QStyle::PixelMetric metric, const Theme& theme) {
    switch (metric) {
    case QStyle::PM_IndicatorWidth:
    case QStyle::PM_IndicatorHeight:
    case QStyle::PM_ExclusiveIndicatorWidth:
    case QStyle::PM_ExclusiveIndicatorHeight:
        return theme.extent(Extent::box);
    case QStyle::PM_SmallIconSize:
    case QStyle::PM_ListViewIconSize:
    case QStyle::PM_ButtonIconSize:
    case QStyle::PM_LineEditIconSize:
        return theme.extent(Extent::icon);
    case QStyle::PM_CheckBoxLabelSpacing:
    case QStyle::PM_RadioButtonLabelSpacing:
    case QStyle::PM_LayoutHorizontalSpacing:
    case QStyle::PM_LayoutVerticalSpacing:
        return theme.space(Space::medium);
    case QStyle::PM_LayoutLeftMargin:
    case QStyle::PM_LayoutRightMargin:
    case QStyle::PM_LayoutTopMargin:
    case QStyle::PM_LayoutBottomMargin:
        return theme.space(Space::large);
    case QStyle::PM_FocusFrameHMargin: // beside the words of a row
        return theme.space(Space::small);
    case QStyle::PM_ToolBarExtensionExtent:
        return theme.extent(Extent::control);
    case QStyle::PM_ToolBarSeparatorExtent:
        return 2 * theme.space(Space::small) + kLine;
    case QStyle::PM_ToolBarItemSpacing:
        return theme.space(Space::hair);
    case QStyle::PM_MenuVMargin:
    case QStyle::PM_ToolTipLabelFrameWidth:
        return theme.space(Space::small);
    case QStyle::PM_SubMenuOverlap:
        return -theme.space(Space::hair);
    case QStyle::PM_ScrollBarExtent:
    case QStyle::PM_ScrollView_ScrollBarOverlap: // the handle lies over the content
        return ScrollHandle::width(theme);
    case QStyle::PM_ScrollBarSliderMin:
        return theme.extent(Extent::control);
    case QStyle::PM_SplitterWidth: // Qt widens what can be grabbed of so thin a line
        return kLine;
    case QStyle::PM_MenuHMargin:
    case QStyle::PM_MenuPanelWidth:
    case QStyle::PM_ButtonShiftHorizontal:
    case QStyle::PM_ButtonShiftVertical:
    case QStyle::PM_ScrollView_ScrollBarSpacing:
    case QStyle::PM_ToolBarFrameWidth:
        return 0;
    default:
        return std::nullopt;
    }
}

std::optional<int> StyleMetrics::hint(QStyle::StyleHint hint, const Theme& theme) {
    switch (hint) {
    case QStyle::SH_Widget_Animation_Duration:
        return theme.motion(Motion::calm);
    case QStyle::SH_ComboBox_ListMouseTracking:
        return 1;
    case QStyle::SH_ComboBox_PopupFrameStyle:
        return static_cast<int>(QFrame::StyledPanel) | static_cast<int>(QFrame::Plain);
    case QStyle::SH_ToolTipLabel_Opacity:
        return 255;
    case QStyle::SH_ComboBox_Popup: // the list opens below its button, and does not cover it
    case QStyle::SH_EtchDisabledText:
    case QStyle::SH_ScrollBar_Transient: // Qt would take its own time for fading
    case QStyle::SH_ScrollBar_ContextMenu:
    case QStyle::SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    default:
        return std::nullopt;
    }
}

QSize StyleMetrics::size(QStyle::ContentsType type, const QStyleOption* option,
                         const QSize& content, const QSize& base, const Theme& theme) {
    const auto height = theme.extent(Extent::control);
    const auto margin = theme.space(Space::medium);
    const auto ofControl = [height](QSize size) { return size.expandedTo({0, height}); };
    switch (type) {
    case QStyle::CT_PushButton: {
        const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
        const auto hasWords = button && !button->text.isEmpty();
        const auto around = theme.space(hasWords ? Space::large : Space::small);
        return ofControl(content + QSize(2 * around, theme.space(Space::small)));
    }
    case QStyle::CT_ToolButton: {
        const auto* const button = qstyleoption_cast<const QStyleOptionToolButton*>(option);
        const auto caret = button && ButtonDrawing::hasCaret(*button)
                               ? theme.extent(Extent::caret) + theme.space(Space::hair)
                               : 0;
        const auto hasWords =
            button && button->toolButtonStyle != Qt::ToolButtonIconOnly && !button->text.isEmpty();
        const auto around = theme.space(hasWords ? Space::medium : Space::small);
        return ofControl(content + QSize(2 * around + caret, 2 * theme.space(Space::small)));
    }
    case QStyle::CT_CheckBox:
    case QStyle::CT_RadioButton:
        return ofControl(base + QSize(2 * theme.space(Space::small), 0));
    case QStyle::CT_LineEdit:
        return ofControl(content + QSize(2 * margin, theme.space(Space::small)));
    case QStyle::CT_ComboBox:
        return ofControl(content + QSize(3 * margin + theme.extent(Extent::caret), 0));
    case QStyle::CT_SpinBox:
        return ofControl(content + QSize(2 * margin + theme.extent(Extent::caret), 0));
    case QStyle::CT_ItemViewItem:
        return ofControl(base);
    case QStyle::CT_ProgressBar:
        return {base.width(), theme.extent(Extent::box)};
    case QStyle::CT_MenuItem:
        if (const auto* const item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            return MenuDrawing::sizeOf(*item, content, theme);
        }
        return base;
    default:
        return base;
    }
}

} // namespace korvex::ui
