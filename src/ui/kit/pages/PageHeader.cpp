#include "ui/kit/pages/PageHeader.h"

#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/theme/Direction.h"

#include <QLabel>

#include <algorithm>

namespace korvex::ui {

PageHeader::PageHeader(const QString& title, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_title(new QLabel(title, this)),
      m_note(new QLabel(this)),
      m_words(new WordsAndButton(*m_title, *m_note, WordsAndButton::Below::atBeginning)) {
    m_title->setWordWrap(true); // so that a large font does not keep the window wide
    m_title->setAlignment(lineStart());
    m_note->setAlignment((lineEnd() & Qt::AlignHorizontal_Mask) | Qt::AlignTop);
    m_note->setForegroundRole(QPalette::PlaceholderText);
    setLayout(m_words);
    connect(&theme, &Theme::changed, this, &PageHeader::applyTheme);
    applyTheme();
}

QString PageHeader::title() const {
    return m_title->text();
}

void PageHeader::setNote(const QString& note) {
    m_note->setText(note);
}

void PageHeader::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    alignNote(*m_note, *m_title, *m_words);
}

void PageHeader::applyTheme() {
    m_title->setFont(m_theme.titleFont());
    m_note->setFont(m_theme.font());
    const auto side = m_theme.space(Space::wide);
    layout()->setContentsMargins(side, m_theme.space(Space::large), side,
                                 m_theme.space(Space::medium));
    layout()->setSpacing(m_theme.space(Space::large));
    // As high as one with buttons in it, so that titles stand at one height on all pages.
    const QFontMetrics title(m_theme.titleFont());
    const auto above = std::max(0, m_theme.extent(Extent::control) - title.height()) / 2;
    m_title->setContentsMargins(0, above, 0, above);
    m_words->setNarrowest(title.horizontalAdvance(m_title->text()));
    alignNote(*m_note, *m_title, *m_words);
}

} // namespace korvex::ui
