#include "ui/TodoEditor.h"

#include "ui/EntryRowLayout.h"
#include "ui/IconSet.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTextLayout>
#include <QToolButton>

#include <cmath>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;

} // namespace

TodoEditor::TodoEditor(const Theme& theme, QWidget* parent)
    : QFrame(parent),
      m_theme(theme),
      m_field(new TodoTextEdit(this)),
      m_schedule(new QToolButton(this)),
      m_error(new QLabel(this)),
      m_discard(new QPushButton(tr("Discard"), this)) {
    m_schedule->setAutoRaise(true);
    m_schedule->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_schedule->setLayoutDirection(Qt::RightToLeft); // the bell stands behind the label
    m_schedule->setFocusPolicy(Qt::TabFocus);
    m_schedule->setCursor(Qt::PointingHandCursor);
    m_schedule->setToolTip(tr("Schedule (Ctrl+D)"));
    m_error->setWordWrap(true);
    m_error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_error->hide();
    m_discard->setFlat(true);
    m_discard->setCursor(Qt::PointingHandCursor);
    m_discard->setToolTip(tr("Give up what was typed here"));
    m_discard->hide();
    setFocusProxy(m_field);
    connect(m_field, &QTextEdit::textChanged, this, &TodoEditor::clearError);
    connect(m_field->document(), &QTextDocument::contentsChanged, this,
            &TodoEditor::neededHeightChanged);
    connect(m_schedule, &QToolButton::clicked, this, &TodoEditor::scheduleClicked);
    connect(m_discard, &QPushButton::clicked, this, &TodoEditor::discarded);
    connect(&theme, &Theme::changed, this, &TodoEditor::applyTheme);
    applyTheme();
}

void TodoEditor::setText(const QString& text) {
    m_field->setPlainText(text);
    clearError();
}

void TodoEditor::setDueLabel(const DueLabel& label) {
    m_dueLabel = label;
    applyTheme();
}

void TodoEditor::showError(const QString& message) {
    m_error->setText(message);
    m_error->setAccessibleName(message);
    m_error->show();
    m_discard->show();
    Q_EMIT neededHeightChanged();
}

void TodoEditor::clearError() {
    if (hasError()) {
        m_error->hide();
        m_discard->hide();
        Q_EMIT neededHeightChanged();
    }
}

bool TodoEditor::hasError() const {
    return !m_error->isHidden();
}

int TodoEditor::neededHeight(int width) {
    const auto frame = EntryRowLayout::frame(m_theme);
    const int room = width - frame.textLeft - frame.textRight;
    const auto arranged = arrangement(room);
    int height =
        std::max(arranged.textHeight, frame.signSize) + 2 * frame.padding + m_theme.rowDistance();
    if (!arranged.isBeside) {
        height += QFontMetrics(m_theme.smallFont()).lineSpacing() + 1;
    }
    if (hasError()) {
        height += m_error->heightForWidth(room - m_discard->sizeHint().width()) + frame.padding;
    }
    return height;
}

void TodoEditor::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    const auto frame = EntryRowLayout::frame(m_theme);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), colors.content);
    const QRectF box(frame.boxMargin + 0.75, m_theme.rowDistance() / 2.0 + 0.75,
                     width() - 2 * frame.boxMargin - 1.5, height() - m_theme.rowDistance() - 1.5);
    painter.setPen(QPen(hasError() ? colors.danger : colors.accent, 1.5));
    painter.setBrush(colors.content);
    painter.drawRoundedRect(box, kCornerRadius, kCornerRadius);
    const QFontMetrics metrics(m_theme.font());
    const int line = std::max(metrics.lineSpacing(), frame.signSize);
    const int top = m_theme.rowDistance() / 2 + frame.padding + (line - frame.signSize) / 2;
    painter.drawPixmap(frame.textLeft - (frame.textLeft - frame.boxMargin - frame.signSize) / 2 -
                           frame.signSize,
                       top,
                       IconSet::pixmap(QStringLiteral("circle"), colors.secondaryText,
                                       frame.signSize, devicePixelRatioF()));
}

void TodoEditor::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    place();
}

void TodoEditor::applyTheme() {
    const auto& colors = m_theme.colors();
    m_field->setFont(m_theme.font());
    m_field->document()->setDefaultFont(m_theme.font());
    auto fieldPalette = m_field->palette();
    fieldPalette.setColor(QPalette::Base, Qt::transparent);
    fieldPalette.setColor(QPalette::Text, colors.text);
    m_field->setPalette(fieldPalette);
    for (QWidget* const each : {static_cast<QWidget*>(m_schedule), static_cast<QWidget*>(m_error),
                                static_cast<QWidget*>(m_discard)}) {
        each->setFont(m_theme.smallFont());
    }
    auto dangerPalette = m_error->palette();
    dangerPalette.setColor(QPalette::WindowText, colors.danger);
    dangerPalette.setColor(QPalette::Text, colors.danger); // of a label whose text can be selected
    m_error->setPalette(dangerPalette);
    const auto quiet = m_dueLabel.isOverdue ? colors.danger : colors.secondaryText;
    auto schedulePalette = m_schedule->palette();
    schedulePalette.setColor(QPalette::ButtonText, quiet);
    m_schedule->setPalette(schedulePalette);
    m_schedule->setText(m_dueLabel.text);
    m_schedule->setAccessibleName(m_dueLabel.text.isEmpty() ? tr("Schedule") : m_dueLabel.text);
    const int size = m_theme.scaled(m_dueLabel.isEmpty() ? 16 : 13);
    m_schedule->setIconSize({size, size});
    m_schedule->setIcon(m_dueLabel.isEmpty() ? IconSet::icon(QStringLiteral("calendar-plus"), quiet)
                        : m_dueLabel.hasReminder ? IconSet::icon(QStringLiteral("bell-fill"), quiet)
                                                 : QIcon());
    Q_EMIT neededHeightChanged();
}

/// The document of a hidden field knows no width: its text is laid out here, as in the row.
TextArrangement TodoEditor::arrangement(int room) const {
    QTextLayout layout(text(), m_theme.font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    const auto frame = EntryRowLayout::frame(m_theme);
    const bool hasDue = !m_dueLabel.isEmpty();
    const int beside =
        hasDue ? m_dueLabel.width(m_theme) + 2 * frame.gap : frame.scheduleSize + frame.gap;
    return arrangeText(layout, room, beside, hasDue);
}

void TodoEditor::place() {
    const auto frame = EntryRowLayout::frame(m_theme);
    const int room = width() - frame.textLeft - frame.textRight;
    const int lineSpacing = QFontMetrics(m_theme.font()).lineSpacing();
    const int line = std::max(lineSpacing, frame.signSize);
    const int lead = (line - lineSpacing) / 2;
    const int top = m_theme.rowDistance() / 2 + frame.padding;
    const auto arranged = arrangement(room);
    // Some room below, so that the field never scrolls by a rounded pixel.
    m_field->setGeometry(frame.textLeft, top + lead, arranged.textWidth,
                         arranged.textHeight + frame.padding - 1);
    int y = top + std::max(arranged.textHeight + lead, line);

    const int small = QFontMetrics(m_theme.smallFont()).lineSpacing();
    const auto button = m_schedule->sizeHint();
    if (arranged.isBeside) {
        m_schedule->setGeometry(width() - frame.textRight - button.width() + frame.gap / 2,
                                top + (line - button.height()) / 2, button.width(),
                                button.height());
    } else {
        m_schedule->setGeometry(frame.textLeft - 1, y - (button.height() - small) / 2,
                                button.width(), button.height());
        y += small + 1;
    }
    if (hasError()) {
        const int discard = m_discard->sizeHint().width();
        m_error->setGeometry(frame.textLeft, y, room - discard,
                             m_error->heightForWidth(room - discard));
        m_discard->setGeometry(frame.textLeft + room - discard, y - 2, discard, small + 4);
    }
}

} // namespace korvex::ui
