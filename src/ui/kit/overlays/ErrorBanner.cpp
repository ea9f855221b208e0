#include "ui/kit/overlays/ErrorBanner.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimer>
#include <QToolButton>

namespace korvex::ui {

namespace {

using namespace std::chrono_literals;

/// Long enough to read the notice and to reach its button.
constexpr auto kNoticeShown = 10s;
constexpr double kCornerRadius = 6;

} // namespace

ErrorBanner::ErrorBanner(const Theme& theme, QWidget* parent)
    : QFrame(parent),
      m_theme(theme),
      m_sign(new QLabel(this)),
      m_text(new QLabel(this)),
      m_action(new QToolButton(this)),
      m_close(new QToolButton(this)),
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
    row->addWidget(m_text, 1);
    row->addWidget(m_action, 0, Qt::AlignTop);
    row->addWidget(m_close, 0, Qt::AlignTop);
    hide();
    m_action->hide();
    m_action->setAutoRaise(true);
    m_end->setSingleShot(true);
    m_end->setInterval(kNoticeShown);
    connect(m_end, &QTimer::timeout, this, &ErrorBanner::clear);
    connect(m_action, &QToolButton::clicked, this, [this] {
        const auto perform = m_perform;
        clear();
        perform();
    });
    connect(m_close, &QToolButton::clicked, this, &ErrorBanner::clear);
    connect(&theme, &Theme::changed, this, &ErrorBanner::applyTheme);
    applyTheme();
}

void ErrorBanner::showMessage(const QString& message, Tone tone) {
    m_tone = tone;
    m_end->stop();
    m_action->hide();
    m_text->setText(message);
    applyTheme();
    show();
    Accessibility::say(*this, message);
}

void ErrorBanner::tell(const QString& message) {
    showMessage(message, Tone::notice);
    m_end->start();
}

void ErrorBanner::offer(const QString& message, const QString& action,
                        std::function<void()> perform) {
    tell(message);
    m_perform = std::move(perform);
    m_action->setText(action);
    m_action->show();
}

void ErrorBanner::endOffer() {
    if (!m_action->isHidden()) {
        clear();
    }
}

void ErrorBanner::clear() {
    hide();
    m_end->stop();
    m_action->hide();
    m_text->clear();
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
    const auto color = m_tone == Tone::error ? colors.danger : colors.text;
    const auto ground =
        messageGround(colors, m_tone == Tone::error ? colors.danger : colors.accent);
    auto own = palette();
    own.setColor(QPalette::Window, ground);
    own.setColor(QPalette::WindowText, readable(color, ground));
    setPalette(own);
    m_text->setPalette(own);
    m_action->setPalette(own);
    const auto size = m_theme.scaled(16);
    m_sign->setPixmap(IconSet::pixmap(QStringLiteral("warning-circle"), readable(color, ground),
                                      size, devicePixelRatioF()));
    m_close->setIcon(IconSet::icon(QStringLiteral("x"), readable(color, ground)));
}

} // namespace korvex::ui
