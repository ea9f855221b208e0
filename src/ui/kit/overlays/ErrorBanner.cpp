#include "ui/kit/overlays/ErrorBanner.h"

#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimer>
#include <QToolButton>

#include <utility>

namespace korvex::ui {

namespace {

using namespace std::chrono_literals;

/// Long enough to read the notice and to reach its button.
constexpr auto kNoticeShown = 10s;
constexpr double kCornerRadius = 6;
/// In pixels, at the standard font size.
constexpr int kNarrowestText = 160;

} // namespace

ErrorBanner::ErrorBanner(const Theme& theme, QWidget* parent)
    : QFrame(parent),
      m_theme(theme),
      m_sign(new QLabel(this)),
      m_text(new QLabel(this)),
      m_action(new QToolButton(this)),
      m_close(new QToolButton(this)),
      m_words(new WordsAndButton(*m_text, *m_action)),
      m_end(new QTimer(this)) {
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    m_text->setWordWrap(true);
    m_text->setAlignment(lineStart());
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_close->setAutoRaise(true);
    m_close->setAccessibleName(tr("Close this message"));
    m_close->setToolTip(tr("Close this message"));
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(10, 8, 10, 8);
    row->setSpacing(10);
    row->addWidget(m_sign, 0, Qt::AlignTop);
    row->addLayout(m_words, 1);
    row->addWidget(m_close, 0, Qt::AlignTop);
    hide();
    m_action->hide();
    m_action->setAutoRaise(true);
    // A click on what goes with it leaves the keyboard where one types.
    m_action->setFocusPolicy(Qt::TabFocus);
    m_close->setFocusPolicy(Qt::TabFocus);
    m_end->setSingleShot(true);
    m_end->setInterval(kNoticeShown);
    connect(m_end, &QTimer::timeout, this, &ErrorBanner::endShown);
    connect(m_action, &QToolButton::clicked, this, [this] {
        const auto perform = m_said.back().message.perform;
        endShown();
        perform();
    });
    connect(m_close, &QToolButton::clicked, this, &ErrorBanner::endShown);
    connect(&theme, &Theme::changed, this, &ErrorBanner::applyTheme);
    applyTheme();
}

ErrorBanner::MessageId ErrorBanner::say(Message message, MessageId instead) {
    std::erase_if(m_said, [instead](const Said& each) { return each.id == instead; });
    m_said.push_back({++m_lastId, std::move(message)});
    showLast();
    return m_lastId;
}

void ErrorBanner::end(MessageId id) {
    std::erase_if(m_said, [id](const Said& each) { return each.id == id; });
    showLast();
}

void ErrorBanner::endShown() {
    end(m_shown);
}

void ErrorBanner::showLast() {
    const auto last = m_said.empty() ? 0 : m_said.back().id;
    if (last == std::exchange(m_shown, last)) {
        return;
    }
    m_end->stop();
    if (m_said.empty()) {
        hide();
        m_text->clear();
        return;
    }
    const auto& message = m_said.back().message;
    m_action->setText(message.action);
    m_action->setVisible(!message.action.isEmpty());
    m_text->setText(message.text);
    applyTheme();
    show();
    Accessibility::say(*this, message.text);
    if (message.lasts == Lasts::shortly) {
        m_end->start();
    }
}

QString ErrorBanner::message() const {
    return m_text->text();
}

void ErrorBanner::paintEvent(QPaintEvent*) {
    const auto ground = palette().color(QPalette::Window);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(blended(palette().color(QPalette::WindowText), ground, 0.35));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCornerRadius,
                            kCornerRadius);
}

void ErrorBanner::applyTheme() {
    const auto& colors = m_theme.colors();
    const auto isError = m_said.empty() || m_said.back().message.tone == Tone::error;
    const auto color = isError ? colors.danger : colors.text;
    const auto ground = messageGround(colors, isError ? colors.danger : colors.accent);
    auto own = palette();
    own.setColor(QPalette::Window, ground);
    own.setColor(QPalette::WindowText, readable(color, ground));
    setPalette(own);
    m_text->setPalette(own);
    m_action->setPalette(own);
    const auto size = m_theme.scaled(16);
    m_sign->setPixmap(IconSet::pixmap(QStringLiteral("warning-circle"), readable(color, ground),
                                      size, devicePixelRatioF()));
    m_words->setNarrowest(m_theme.scaled(kNarrowestText));
    m_close->setIconSize({size, size});
    m_close->setIcon(IconSet::icon(QStringLiteral("x"), readable(color, ground)));
}

} // namespace korvex::ui
