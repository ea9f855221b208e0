#include "ui/kit/pages/PageHeader.h"

#include "ui/kit/theme/Direction.h"

#include <QHBoxLayout>
#include <QLabel>

namespace korvex::ui {

PageHeader::PageHeader(const QString& title, const Theme& theme, QWidget* parent)
    : QWidget(parent), m_theme(theme), m_title(new QLabel(title, this)), m_note(new QLabel(this)) {
    // They wrap, so that a large font does not keep the window wide.
    m_title->setWordWrap(true);
    m_note->setWordWrap(true);
    m_title->setAlignment(lineStart());
    m_note->setAlignment(lineEnd());
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(18, 16, 18, 10);
    row->addWidget(m_title, 1);
    row->addWidget(m_note);
    connect(&theme, &Theme::changed, this, &PageHeader::applyTheme);
    applyTheme();
}

QString PageHeader::title() const {
    return m_title->text();
}

void PageHeader::setNote(const QString& note) {
    m_note->setText(note);
}

void PageHeader::applyTheme() {
    m_title->setFont(m_theme.titleFont());
    m_note->setFont(m_theme.font());
    auto quiet = m_note->palette();
    quiet.setColor(QPalette::WindowText, m_theme.colors().secondaryText);
    m_note->setPalette(quiet);
}

} // namespace korvex::ui
