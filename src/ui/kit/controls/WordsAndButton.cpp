#include "ui/kit/controls/WordsAndButton.h"

#include <QFontMetrics>
#include <QLabel>

#include <algorithm>

namespace korvex::ui {

WordsAndButton::WordsAndButton(QWidget& words, QWidget& button, Below below)
    : QBoxLayout(LeftToRight), m_below(below) {
    addWidget(&words, 1);
    addWidget(&button, 0, Qt::AlignTop | Qt::AlignRight);
}

void WordsAndButton::setSpacing(int spacing) {
    m_spacingBeside = spacing;
    setSpacingBelow(spacing);
}

void WordsAndButton::setSpacingBelow(int spacing) {
    m_spacingBelow = spacing;
    QBoxLayout::setSpacing(direction() == TopToBottom ? m_spacingBelow : m_spacingBeside);
}

int WordsAndButton::roomBeside(int width) const {
    return itemAt(1)->isEmpty() ? width : width - m_spacingBeside - itemAt(1)->sizeHint().width();
}

int WordsAndButton::heightForWidth(int width) const {
    const auto margins = contentsMargins();
    const int room = width - margins.left() - margins.right();
    const int button = itemAt(1)->isEmpty() ? 0
                       : isBeside(room) || !itemAt(1)->hasHeightForWidth()
                           ? itemAt(1)->sizeHint().height()
                           : itemAt(1)->heightForWidth(room);
    const auto words = [this](int column) {
        return std::max(itemAt(0)->heightForWidth(column), itemAt(0)->minimumSize().height());
    };
    const int height = button == 0      ? words(room)
                       : isBeside(room) ? std::max(words(roomBeside(room)), button)
                                        : words(room) + m_spacingBelow + button;
    return height + margins.top() + margins.bottom();
}

QSize WordsAndButton::minimumSize() const {
    const auto margins = contentsMargins();
    return itemAt(0)->minimumSize().expandedTo(itemAt(1)->minimumSize()) +
           QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

void WordsAndButton::setGeometry(const QRect& rect) {
    const auto margins = contentsMargins();
    const auto beside = isBeside(rect.width() - margins.left() - margins.right());
    setDirection(beside ? LeftToRight : TopToBottom);
    if (const auto now = beside ? m_spacingBeside : m_spacingBelow; now != spacing()) {
        QBoxLayout::setSpacing(now);
    }
    const auto isAtBeginning = !beside && m_below == Below::atBeginning;
    itemAt(1)->setAlignment(Qt::AlignTop | (isAtBeginning ? Qt::AlignLeft : Qt::AlignRight));
    QBoxLayout::setGeometry(rect);
}

void alignNote(QLabel& note, const QLabel& words, const WordsAndButton& layout) {
    const auto isBeside = layout.direction() != QBoxLayout::TopToBottom;
    const auto above =
        words.contentsMargins().top() +
        (QFontMetrics(words.font()).height() - QFontMetrics(note.font()).height()) / 2;
    note.setContentsMargins(0, isBeside ? above : 0, 0, 0);
}

} // namespace korvex::ui
