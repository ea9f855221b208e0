#include "ui/kit/pages/PageHint.h"

#include <QLabel>
#include <QVBoxLayout>

namespace korvex::ui {

PageHint::PageHint(const Theme& theme)
    : m_theme(theme), m_what(new QLabel(this)), m_next(new QLabel(this)) {
    auto* const column = new QVBoxLayout(this);
    for (auto* const line : {m_what, m_next}) {
        line->setTextFormat(Qt::PlainText);
        line->setWordWrap(true);
        line->setAlignment(Qt::AlignCenter);
        line->setForegroundRole(QPalette::PlaceholderText);
        column->addWidget(line);
    }
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
    connect(&theme, &Theme::changed, this, &PageHint::applyTheme);
    applyTheme();
}

void PageHint::say(const QString& what, const QString& next) {
    m_what->setText(what);
    m_next->setText(next);
    m_next->setVisible(!next.isEmpty());
    setVisible(!what.isEmpty());
}

QSize PageHint::sizeHint() const {
    return {m_theme.measure(), QWidget::sizeHint().height()};
}

void PageHint::applyTheme() {
    m_what->setFont(m_theme.font());
    m_next->setFont(m_theme.smallFont());
    const auto side = m_theme.space(Space::wide);
    const auto foot = m_theme.space(Space::vast);
    layout()->setContentsMargins(side, 0, side, foot);
    layout()->setSpacing(m_theme.space(Space::small));
}

} // namespace korvex::ui
