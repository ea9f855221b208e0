#include "ui/kit/overlays/ErrorBanner.h"

#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

/// In pixels, at the standard font size.
constexpr int kNarrowestText = 160;
/// How much of the colour of the words its edge has, which sets it off from the rows under it.
constexpr double kEdge = 0.35;

} // namespace

ErrorBanner::ErrorBanner(const Theme& theme, QWidget* parent)
    : QFrame(parent),
      m_theme(theme),
      m_sign(new QLabel(this)),
      m_text(new QLabel(this)),
      m_action(new QPushButton(this)),
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
    row->addWidget(m_sign, 0, Qt::AlignTop);
    row->addLayout(m_words, 1);
    row->addWidget(m_close, 0, Qt::AlignTop);
    hide();
    m_action->hide();
    m_action->setAutoDefault(true);
    // A click on what goes with it leaves the keyboard where one types.
    m_action->setFocusPolicy(Qt::TabFocus);
    m_close->setFocusPolicy(Qt::TabFocus);
    m_end->setSingleShot(true);
    m_end->setInterval(kNoticeShown);
    connect(m_end, &QTimer::timeout, this, &ErrorBanner::endShown);
    connect(m_action, &QPushButton::clicked, this, [this] {
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

int ErrorBanner::widthOfWords() const {
    // What is measured may be a part of a pixel too narrow for what is drawn.
    return QFontMetrics(m_text->font()).size(0, m_text->text()).width() + 2;
}

QSize ErrorBanner::sizeHint() const {
    const auto margins = layout()->contentsMargins();
    int width = margins.left() + margins.right() + widthOfWords();
    for (const auto* const part : std::initializer_list<QWidget*>{m_sign, m_action, m_close}) {
        const auto needed = part->sizeHint().expandedTo(part->minimumSize()).width();
        width += part->isHidden() ? 0 : needed + layout()->spacing();
    }
    return {std::min(width, m_theme.measure()), QFrame::sizeHint().height()};
}

void ErrorBanner::paintEvent(QPaintEvent*) {
    const auto ground = palette().color(QPalette::Window);
    QPainter painter(this);
    Shapes::paintBox(painter, rect(), m_theme.radius(Radius::large), ground,
                     m_theme.colors().isHighContrast
                         ? Shapes::controlEdge(m_theme.colors())
                         : blended(palette().color(QPalette::WindowText), ground, kEdge));
}

void ErrorBanner::applyTheme() {
    const auto& colors = m_theme.colors();
    const auto isError = m_said.empty() || m_said.back().message.tone == Tone::error;
    const auto ground = messageGround(colors, isError ? colors.danger : colors.accent);
    const auto words =
        readable(isError ? colors.danger : colors.text, ground, colors.textContrast());
    auto own = palette();
    own.setColor(QPalette::Window, ground);
    own.setColor(QPalette::WindowText, words);
    setPalette(own);
    m_text->setPalette(own);
    const auto size = m_theme.extent(Extent::icon);
    const auto side = m_theme.space(Space::large);
    const auto lead = m_theme.space(Space::medium);
    const auto line = m_theme.extent(Extent::control);
    layout()->setContentsMargins(mirrored(QMargins(side, lead, lead, lead)));
    layout()->setSpacing(lead);
    m_words->setSpacing(lead);
    // One line of words is as high as the buttons beside it.
    m_text->setMinimumHeight(line);
    m_sign->setFixedHeight(line);
    m_sign->setVisible(isError);
    m_close->setFixedSize(line, line);
    m_sign->setPixmap(
        IconSet::pixmap(QStringLiteral("warning-circle"), words, size, devicePixelRatioF()));
    m_words->setNarrowest(std::min(m_theme.scaled(kNarrowestText), widthOfWords()));
    m_close->setIconSize({size, size});
    m_close->setIcon(IconSet::icon(QStringLiteral("x"), words));
}

} // namespace korvex::ui
