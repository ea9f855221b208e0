#include "ui/entries/RowRefusal.h"

#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/todos/RowFrame.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace korvex::ui {

namespace {

/// The words are not to stand in a narrower column, at the standard font size.
constexpr int kNarrowestText = 180;

} // namespace

RowRefusal::RowRefusal(const Theme& theme, QWidget* editor)
    : QFrame(editor),
      m_theme(theme),
      m_text(new QLabel(this)),
      m_discard(new QPushButton(tr("Discard"), this)),
      m_words(new WordsAndButton(*m_text, *m_discard)) {
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(lineStart());
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_discard->setFlat(true);
    m_discard->setCursor(Qt::PointingHandCursor);
    m_discard->setToolTip(tr("Give up what was typed here"));
    setLayout(m_words);
    hide();
    connect(m_discard, &QPushButton::clicked, this, &RowRefusal::discarded);
    connect(&theme, &Theme::changed, this, &RowRefusal::applyTheme);
    applyTheme();
}

void RowRefusal::setMessage(const QString& message, ErrorBanner::Tone tone) {
    m_tone = tone;
    m_text->setText(message);
    applyTheme();
    show();
    raise();
    Accessibility::say(*this, message);
}

bool RowRefusal::setDiscardable(bool discardable) {
    const auto isOther = m_discard->isHidden() == discardable;
    m_discard->setVisible(discardable);
    return isOther;
}

QString RowRefusal::message() const {
    return m_text->text();
}

int RowRefusal::neededHeight(int width) const {
    return m_words->heightForWidth(width);
}

void RowRefusal::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    Shapes::paintBox(painter, rect(), m_theme.radius(Radius::small), messageGround(colors, color()),
                     Shapes::controlEdge(colors));
}

QColor RowRefusal::color() const {
    const auto& colors = m_theme.colors();
    return m_tone == ErrorBanner::Tone::error ? colors.danger : colors.accent;
}

void RowRefusal::applyTheme() {
    const auto& colors = m_theme.colors();
    const auto ground = messageGround(colors, color());
    m_text->setFont(m_theme.smallFont());
    m_discard->setFont(m_theme.smallFont());
    const auto padding = m_theme.space(Space::small);
    m_words->setContentsMargins(
        mirrored(QMargins(RowFrame::of(m_theme).gap - padding, padding, padding, padding)));
    m_words->setSpacing(m_theme.space(Space::medium));
    m_words->setNarrowest(m_theme.scaled(kNarrowestText));
    const auto words = readable(m_tone == ErrorBanner::Tone::error ? colors.danger : colors.text,
                                ground, colors.textContrast());
    auto own = m_text->palette();
    // A text that can be selected is drawn in the second.
    for (const auto role : {QPalette::WindowText, QPalette::Text}) {
        own.setColor(role, words);
    }
    m_text->setPalette(own);
}

} // namespace korvex::ui
