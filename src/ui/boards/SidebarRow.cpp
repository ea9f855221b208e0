#include "ui/boards/SidebarRow.h"

#include "ui/kit/lists/RowGround.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyleOption>

namespace korvex::ui {

namespace {

// Those of the boards below.
constexpr int kSideMargin = 8;
constexpr int kPadding = 8;
constexpr int kIconSize = 18;

} // namespace

SidebarRow::SidebarRow(const QString& iconName, const QString& text, const Theme& theme,
                       QWidget* parent)
    : QAbstractButton(parent), m_theme(theme), m_iconName(iconName) {
    setText(text);
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setAccessibleName(text);
    Accessibility::setRole(*this, QAccessible::ListItem);
    setToolTip(text);
    connect(&theme, &Theme::changed, this, [this] { updateGeometry(); });
}

void SidebarRow::setCount(int count) {
    setNote(count > 0 ? QString::number(count) : QString(),
            count > 0 ? tr("%n open todo(s)", nullptr, count) : QString());
}

void SidebarRow::setNote(const QString& note, const QString& description) {
    setAccessibleDescription(description);
    if (m_note != note) {
        m_note = note;
        update();
    }
}

QSize SidebarRow::sizeHint() const {
    const int height =
        std::max(QFontMetrics(m_theme.font()).lineSpacing(), m_theme.scaled(kIconSize));
    return {0, height + 10 + m_theme.rowDistance() / 2};
}

void SidebarRow::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QStyle::State state;
    state.setFlag(QStyle::State_Selected, isChecked());
    state.setFlag(QStyle::State_MouseOver, underMouse() || isDown());
    state.setFlag(QStyle::State_HasFocus, hasFocus());
    const auto box = rect().adjusted(kSideMargin, 1, -kSideMargin, -1);
    paintRowGround(painter, box, state, colors.sidebar, m_theme);

    const auto size = m_theme.scaled(kIconSize);
    const QRect icon(box.left() + kPadding, box.center().y() - size / 2 + 1, size, size);
    IconSet::draw(painter, m_iconName, m_iconColor.isValid() ? m_iconColor : colors.secondaryText,
                  mirrored(icon, box));
    const QFontMetrics metrics(m_theme.font());
    const auto noteWidth = metrics.horizontalAdvance(m_note);
    painter.setFont(m_theme.font());
    painter.setPen(colors.secondaryText);
    painter.drawText(mirrored(box.adjusted(0, 0, -kPadding, 0), box),
                     Qt::AlignRight | Qt::AlignVCenter, m_note);
    const auto name = box.adjusted(kPadding + size + kPadding, 0,
                                   -kPadding - noteWidth - (noteWidth > 0 ? kPadding : 0), 0);
    painter.setPen(colors.text);
    painter.drawText(mirrored(name, box), Qt::AlignLeft | Qt::AlignVCenter,
                     metrics.elidedText(text(), Qt::ElideRight, name.width()));
}

void SidebarRow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        Q_EMIT walked(event->key() == Qt::Key_Up ? -1 : 1);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        return;
    case Qt::Key_Escape:
        event->ignore();
        return;
    default:
        QAbstractButton::keyPressEvent(event);
    }
}

} // namespace korvex::ui
