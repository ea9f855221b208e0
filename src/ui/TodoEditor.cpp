#include "ui/TodoEditor.h"

#include "ui/EntryRowLayout.h"
#include "ui/IconSet.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <cmath>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;

} // namespace

TodoEditor::TodoEditor(const Theme& theme, QWidget* parent)
    : QFrame(parent), m_theme(theme), m_field(new TodoTextEdit(this)), m_error(new QLabel(this)),
      m_discard(new QPushButton(tr("Discard"), this)) {
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
    connect(m_discard, &QPushButton::clicked, this, &TodoEditor::discarded);
    connect(&theme, &Theme::changed, this, &TodoEditor::applyTheme);
    applyTheme();
}

void TodoEditor::setText(const QString& text) {
    m_field->setPlainText(text);
    clearError();
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
    m_field->document()->setTextWidth(room);
    const int text = static_cast<int>(std::ceil(m_field->document()->size().height()));
    int height = std::max(text, frame.signSize) + 2 * frame.padding + m_theme.rowDistance();
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
    m_error->setFont(m_theme.smallFont());
    m_discard->setFont(m_theme.smallFont());
    auto errorPalette = m_error->palette();
    errorPalette.setColor(QPalette::WindowText, colors.danger);
    m_error->setPalette(errorPalette);
    Q_EMIT neededHeightChanged();
}

void TodoEditor::place() {
    const auto frame = EntryRowLayout::frame(m_theme);
    const int room = width() - frame.textLeft - frame.textRight;
    const int lineSpacing = QFontMetrics(m_theme.font()).lineSpacing();
    const int line = std::max(lineSpacing, frame.signSize);
    const int top = m_theme.rowDistance() / 2 + frame.padding + (line - lineSpacing) / 2;
    const int textHeight = static_cast<int>(std::ceil(m_field->document()->size().height()));
    m_field->setGeometry(frame.textLeft, top, room, textHeight + 1);
    if (hasError()) {
        const int discard = m_discard->sizeHint().width();
        const int errorTop = m_theme.rowDistance() / 2 + frame.padding +
                             std::max(textHeight + (line - lineSpacing) / 2, line);
        const int errorHeight = m_error->heightForWidth(room - discard);
        m_error->setGeometry(frame.textLeft, errorTop, room - discard, errorHeight);
        m_discard->setGeometry(frame.textLeft + room - discard,
                               errorTop - 2, discard,
                               QFontMetrics(m_theme.smallFont()).lineSpacing() + 4);
    }
}

} // namespace korvex::ui
