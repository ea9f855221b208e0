#include "ui/boards/BoardHeader.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/NamedRow.h"
#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size: beside the count the name is not to have less, and in a
/// header that is narrower it is no title but a heading, or its words would be too long for it.
constexpr int kNarrowestName = 140;
constexpr int kNarrow = 280;

} // namespace

BoardHeader::BoardHeader(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_line(new QHBoxLayout(this)),
      m_icon(new QToolButton(this)),
      m_name(new QLabel(this)),
      m_count(new QLabel(this)),
      m_words(new WordsAndButton(*m_name, *m_count, WordsAndButton::Below::atBeginning)),
      m_refusal(new RefusalLabel(theme, this)),
      m_menu(new QToolButton(this)) {
    m_icon->setAutoRaise(true);
    m_icon->setFocusPolicy(Qt::TabFocus);
    m_icon->setAccessibleName(tr("Icon of the board"));
    m_icon->setToolTip(tr("Choose icon and color"));
    m_name->setTextFormat(Qt::PlainText);
    m_name->setWordWrap(true);
    m_count->setForegroundRole(QPalette::PlaceholderText);
    m_name->setAlignment((lineStart() & Qt::AlignHorizontal_Mask) | Qt::AlignTop);
    auto policy = m_name->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    m_name->setSizePolicy(policy);
    m_name->installEventFilter(this);
    m_menu->setAutoRaise(true);
    m_menu->setFocusPolicy(Qt::TabFocus);
    m_menu->setAccessibleName(tr("Menu of the board"));
    m_menu->setToolTip(tr("Board and appearance"));
    // All of it stands in the first line of a long name.
    m_line->addWidget(m_icon, 0, Qt::AlignTop);
    auto* const words = new QVBoxLayout;
    words->setSpacing(0);
    words->addLayout(m_words);
    words->addWidget(m_refusal);
    m_line->addLayout(words, 1);
    m_line->addWidget(m_menu, 0, Qt::AlignTop);
    connect(m_icon, &QToolButton::clicked, this,
            [this] { Q_EMIT iconRequested(anchorOf(*m_icon)); });
    connect(m_menu, &QToolButton::clicked, this,
            [this] { Q_EMIT menuRequested(anchorOf(*m_menu)); });
    connect(&theme, &Theme::changed, this, &BoardHeader::applyTheme);
    applyTheme();
}

void BoardHeader::show(const model::Board& board, int openTodoCount) {
    if (m_board != &board && m_field) {
        closeField();
    }
    m_board = &board;
    m_icon->setIcon(
        IconSet::icon(boardIconName(board.iconSystemName()), iconColorOf(board, m_theme.colors())));
    const auto name = toQString(board.name());
    if (m_field && !m_field->isModified()) {
        m_field->setText(name); // what nobody has touched follows the record
        m_field->selectAll();
    }
    m_name->setText(breakable(name));
    m_name->setAccessibleName(name);
    m_name->setCursor(canRename() ? Qt::IBeamCursor : Qt::ArrowCursor);
    m_count->setText(openTodoCount == 0 ? QString() : tr("%L1 open").arg(openTodoCount));
    m_count->setVisible(openTodoCount > 0);
}

void BoardHeader::setChangeable(bool changeable) {
    m_isChangeable = changeable;
    m_icon->setEnabled(changeable);
}

std::optional<QRect> BoardHeader::placeOf(const model::Board& board) const {
    return m_board == &board && isVisible() ? std::optional(anchorOf(*m_icon)) : std::nullopt;
}

QRect BoardHeader::anchorOf(const QWidget& control) const {
    return {control.mapToGlobal(QPoint()), control.size()};
}

void BoardHeader::contextMenuEvent(QContextMenuEvent* event) {
    Q_EMIT menuRequested(event->reason() == QContextMenuEvent::Keyboard
                             ? anchorOf(*m_menu)
                             : QRect(event->globalPos(), QSize(0, 0)));
}

void BoardHeader::rename(model::Board& board, const QString& typed) {
    if (m_board == &board) {
        startRenaming(typed);
    }
}

bool BoardHeader::canRename() const {
    return m_isChangeable && m_board && !m_board->isArchived();
}

void BoardHeader::startRenaming(const QString& typed) {
    if (!canRename()) {
        return;
    }
    if (!m_field) {
        m_field = new QLineEdit(this);
        m_field->setAccessibleName(tr("Name of the board"));
        m_field->installEventFilter(this);
        connect(m_field, &QLineEdit::textEdited, this, [this] { refuse({}); });
        setTabOrder(m_icon, m_field);
    }
    m_field->setFont(m_name->font());
    m_field->setText(typed.isNull() ? toQString(m_board->name()) : typed);
    m_field->setModified(!typed.isNull());
    m_field->selectAll();
    placeField();
    m_name->hide(); // which keeps its room, so that nothing moves
    m_field->show();
    m_field->raise();
    m_field->setFocus();
}

QString BoardHeader::closeField() {
    const auto hadKeyboard = m_field->hasFocus();
    m_field->hide();
    m_name->show();
    refuse({});
    if (hadKeyboard) {
        Q_EMIT renamingLeft();
    }
    return m_field->text();
}

void BoardHeader::refuse(const QString& reason) {
    m_refusal->say(reason);
    m_line->activate();
    if (m_field && !m_field->isHidden()) {
        placeField();
    }
}

void BoardHeader::leaveRenaming() {
    if (!m_field || m_field->isHidden()) {
        return;
    }
    // Whoever deletes a name and goes away has not given another.
    m_field->text().trimmed().isEmpty() ? static_cast<void>(closeField()) : takeName();
}

void BoardHeader::takeName() {
    const auto typed = closeField();
    if (m_board && m_field->isModified() && typed != toQString(m_board->name())) {
        Q_EMIT renamed(typed);
    }
}

/// As high as the name that it takes the place of, however many lines that has.
void BoardHeader::placeField() {
    const auto around = NamedRow::fieldMargin(m_theme);
    const auto name = m_name->geometry();
    const auto line = std::max(m_icon->height(), m_field->sizeHint().height());
    const auto top = m_icon->geometry().center().y() - line / 2;
    const auto left = QGuiApplication::isRightToLeft() ? name.left() : name.left() - around;
    m_field->setGeometry(left, top, name.width() + around, std::max(line, name.bottom() + 1 - top));
}

void BoardHeader::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (m_isNarrow != (width() < m_theme.scaled(kNarrow))) {
        applyTheme();
    }
    alignNote(*m_count, *m_name, *m_words);
    if (m_field && !m_field->isHidden()) {
        m_line->activate();
        placeField();
    }
}

void BoardHeader::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F2 && canRename()) {
        startRenaming();
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool BoardHeader::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (watched == m_name && type == QEvent::MouseButtonPress && canRename() &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        startRenaming();
        return true;
    }
    if (watched == m_field && type == QEvent::KeyPress) {
        return takeKey(static_cast<QKeyEvent*>(event)->key());
    }
    if (watched == m_field && type == QEvent::FocusOut &&
        static_cast<QFocusEvent*>(event)->reason() != Qt::PopupFocusReason) {
        leaveRenaming();
    }
    return QWidget::eventFilter(watched, event);
}

bool BoardHeader::takeKey(int key) {
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        takeName();
    } else if (key == Qt::Key_Escape) {
        closeField();
    } else {
        return false;
    }
    return true;
}

void BoardHeader::applyTheme() {
    const auto& colors = m_theme.colors();
    m_isNarrow = width() < m_theme.scaled(kNarrow);
    const QFontMetrics title(m_isNarrow ? m_theme.sectionFont() : m_theme.titleFont());
    const auto line = std::max(m_theme.extent(Extent::control), title.height());
    // The icon is as large as the name is written.
    const auto sign = m_isNarrow ? m_theme.extent(Extent::sign)
                                 : m_theme.scaled(static_cast<int>(TextSize::title));
    const auto dots = m_theme.extent(Extent::sign);
    for (const auto& [button, size] : {std::pair(m_icon, sign), std::pair(m_menu, dots)}) {
        button->setIconSize({size, size});
        button->setFixedSize(line, line);
    }
    m_menu->setIcon(IconSet::icon(QStringLiteral("dots-three"), colors.secondaryText));

    // What is seen of the buttons ends where the page's content does.
    const auto edge = m_theme.space(Space::wide);
    m_line->setContentsMargins(
        mirrored(QMargins(edge - (line - sign) / 2, m_theme.space(Space::large),
                          edge - (line - dots) / 2, m_theme.space(Space::medium))));
    m_line->setSpacing(m_theme.space(Space::small));
    m_words->setSpacing(m_theme.space(Space::medium));
    m_words->setNarrowest(m_theme.scaled(kNarrowestName));

    const auto above = (line - title.height()) / 2;
    m_name->setFont(m_isNarrow ? m_theme.sectionFont() : m_theme.titleFont());
    m_name->setContentsMargins(0, above, 0, 0);
    // Clear of the field, which is a little higher than the name.
    m_refusal->setContentsMargins(0, m_theme.space(Space::medium), 0, 0);
    m_count->setFont(m_theme.font());
    alignNote(*m_count, *m_name, *m_words);
}

} // namespace korvex::ui
