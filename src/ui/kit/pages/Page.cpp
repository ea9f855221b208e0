#include "ui/kit/pages/Page.h"

#include "ui/kit/overlays/Overlay.h"

#include <QLabel>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

constexpr QMargins kHintMargins(18, 4, 18, 8);
constexpr int kBannerMargin = 10;

} // namespace

Page::Page(const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_column(new QVBoxLayout(this)),
      m_banner(new ErrorBanner(theme)),
      m_hint(new QLabel) {
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_hint->setTextFormat(Qt::PlainText);
    m_hint->setWordWrap(true);
    m_hint->setContentsMargins(kHintMargins);
    m_hint->setForegroundRole(QPalette::PlaceholderText);
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_hint->hide();
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

void Page::layOut(std::initializer_list<QWidget*> top, QWidget& content) {
    m_content = &content;
    for (auto* const each : top) {
        m_column->addWidget(each);
    }
    m_column->addWidget(m_content, 1);
    new Overlay(*m_hint, *m_content, Overlay::Place::middle, 0);
    new Overlay(*m_banner, *m_content, Overlay::Place::foot, kBannerMargin);
}

void Page::insertBar(QWidget& bar) {
    m_column->insertWidget(m_column->indexOf(m_content), &bar);
    auto* last = &bar;
    while (bar.isAncestorOf(last->nextInFocusChain())) {
        last = last->nextInFocusChain();
    }
    setTabOrder(last, m_content);
}

void Page::setHint(const QString& text) {
    m_hint->setText(text);
    m_hint->setVisible(!text.isEmpty());
}

} // namespace korvex::ui
