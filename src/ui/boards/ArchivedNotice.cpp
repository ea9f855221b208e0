#include "ui/boards/ArchivedNotice.h"

#include "ui/kit/IconSet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace korvex::ui {

ArchivedNotice::ArchivedNotice(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_icon(new QLabel(this)),
      m_text(new QLabel(tr("This board is archived."), this)),
      m_unarchive(new QPushButton(tr("Unarchive"), this)) {
    m_text->setWordWrap(true);
    m_unarchive->setAutoDefault(true);
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(18, 2, 18, 8);
    row->addWidget(m_icon);
    row->addWidget(m_text, 1);
    row->addWidget(m_unarchive);
    connect(m_unarchive, &QPushButton::clicked, this, &ArchivedNotice::unarchiveRequested);
    connect(&theme, &Theme::changed, this, &ArchivedNotice::applyTheme);
    applyTheme();
    hide();
}

void ArchivedNotice::applyTheme() {
    const auto& color = m_theme.colors().secondaryText;
    m_icon->setPixmap(
        IconSet::pixmap(QStringLiteral("archive"), color, m_theme.scaled(16), devicePixelRatioF()));
    m_text->setFont(m_theme.font());
    auto quiet = m_text->palette();
    quiet.setColor(QPalette::WindowText, color);
    m_text->setPalette(quiet);
}

} // namespace korvex::ui
