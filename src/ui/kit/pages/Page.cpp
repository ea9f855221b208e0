#include "ui/kit/pages/Page.h"

#include "ui/kit/overlays/Overlay.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/kit/pages/ColumnLayout.h"
#include "ui/kit/pages/PageHint.h"
#include "ui/kit/pages/ScrollEdge.h"

#include <QAbstractScrollArea>

namespace korvex::ui {

Page::Page(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_top(new ColumnLayout(theme)),
      m_banner(new ErrorBanner(theme)),
      m_hint(new PageHint(theme)) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(m_top);
}

bool Page::leave() {
    const auto isFree = Popover::dismissAll(*window());
    return leaveEditing() && isFree;
}

void Page::refuse(const QString& reason) {
    m_answer = m_banner->say({.text = reason}, m_answer);
}

void Page::tell(const QString& message) {
    m_answer = m_banner->say(
        {.text = message, .tone = ErrorBanner::Tone::notice, .lasts = ErrorBanner::Lasts::shortly},
        m_answer);
}

ErrorBanner::MessageId Page::offer(const QString& message, const QString& action,
                                   std::function<void()> perform) {
    m_answer = m_banner->say({.text = message,
                              .tone = ErrorBanner::Tone::notice,
                              .lasts = ErrorBanner::Lasts::shortly,
                              .action = action,
                              .perform = std::move(perform)},
                             m_answer);
    return m_answer;
}

void Page::layOut(std::initializer_list<QWidget*> top, QAbstractScrollArea& content) {
    m_content = &content;
    for (auto* const each : top) {
        m_top->addWidget(each);
    }
    static_cast<QVBoxLayout*>(layout())->addWidget(m_content, 1);
    new ScrollEdge(content, m_theme);
    new Overlay(*m_hint, *m_content, Overlay::Place::middle, m_theme);
    new Overlay(*m_banner, *m_content, Overlay::Place::foot, m_theme, Space::large);
}

void Page::insertBar(QWidget& bar) {
    m_top->addWidget(&bar);
    auto* last = &bar;
    while (bar.isAncestorOf(last->nextInFocusChain())) {
        last = last->nextInFocusChain();
    }
    setTabOrder(last, m_content);
}

void Page::setHint(const QString& text, const QString& next) {
    m_hint->say(text, next);
}

} // namespace korvex::ui
