#include "ui/overview/UpcomingPage.h"

#include "ui/kit/pages/NoticeLine.h"
#include "ui/kit/words/Text.h"

#include <QApplication>
#include <QHideEvent>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Of the group above the sections.
constexpr int kMissedKey = static_cast<int>(schedule::UpcomingSection::reminderOnly) + 1;

/// Whether somebody sits at the window.
bool isOfUser(QEvent::Type type) {
    return type == QEvent::KeyPress || type == QEvent::MouseButtonPress ||
           type == QEvent::MouseMove || type == QEvent::Wheel;
}

} // namespace

UpcomingPage::UpcomingPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : TodoListPage(workspace, theme, TodoListModel::Detail::due, tr("Upcoming"), parent),
      m_notice(new NoticeLine(
          {.icon = QStringLiteral("bell"), .text = QString(), .action = tr("Mark as Seen")},
          theme)) {
    insertBar(*m_notice);
    connect(m_notice, &NoticeLine::pressed, this, [this] {
        m_missed->markSeen();
        takeKeyboard(); // the button is gone
    });
}

std::vector<TodoGroup> UpcomingPage::groups() {
    std::vector<TodoGroup> result;
    if (!m_upcoming) {
        return result;
    }
    if (!m_missed->entries().empty()) {
        result.push_back(
            {.key = kMissedKey, .title = tr("Reminders"), .entries = m_missed->entries()});
    }
    m_rests.clear();
    auto missed = m_missed->entries();
    std::sort(missed.begin(), missed.end());
    for (const auto& group : m_upcoming->groups()) {
        const auto entries = without(missed, group);
        if (!entries.empty()) {
            result.push_back({.key = static_cast<int>(group.section),
                              .title = translated(schedule::title(group.section)),
                              .isUrgent = group.section == schedule::UpcomingSection::overdue,
                              .entries = entries});
        }
    }
    return result;
}

std::span<model::Entry* const> UpcomingPage::without(const std::vector<model::Entry*>& missed,
                                                     const schedule::UpcomingGroup& group) {
    if (missed.empty()) {
        return group.entries;
    }
    auto& rest = m_rests.emplace_back();
    std::copy_if(group.entries.begin(), group.entries.end(), std::back_inserter(rest),
                 [&](model::Entry* each) {
                     return !std::binary_search(missed.begin(), missed.end(), each);
                 });
    return rest;
}

void UpcomingPage::setNow(base::Instant now, const base::TimeZone& zone) {
    if (!m_upcoming) {
        auto& missed = workspace().missedReminders.get();
        m_upcoming = &workspace().upcoming.get();
        m_missed = &missed;
        m_changes = m_upcoming->didChange().connect([this] { groupsChanged(); });
        m_missedChanges = missed.didChange().connect([this] { missedChanged(); });
        m_notice->setText(noticeText());
        m_notice->setHolds(!missed.entries().empty());
    }
    m_upcoming->setNow(now, zone);
}

QString UpcomingPage::noticeText() const {
    using Cause = schedule::MissedReminders::Cause;
    const auto cause = m_missed->cause();
    if (!cause) {
        return tr("Reminders came due that you may not have seen.");
    }
    switch (*cause) {
    case Cause::notShown:
        break;
    case Cause::quieted:
        return tr("Reminders came due while you were not to be disturbed.");
    case Cause::unanswerable:
        return tr("Reminders came due whose notifications cannot be answered here.");
    }
    return tr("Reminders came due that no notification could show.");
}

void UpcomingPage::missedChanged() {
    m_notice->setText(noticeText());
    m_notice->setHolds(!m_missed->entries().empty());
    groupsChanged();
    forgetLabels(); // what stood under "Overdue" has to say so itself, and the other way round
}

void UpcomingPage::showEvent(QShowEvent* event) {
    TodoListPage::showEvent(event);
    if (m_missed && !event->spontaneous()) {
        m_missed->beginShowing(workspace().now());
        QApplication::instance()->installEventFilter(this);
    }
}

void UpcomingPage::hideEvent(QHideEvent* event) {
    TodoListPage::hideEvent(event);
    if (m_missed && !event->spontaneous()) {
        QApplication::instance()->removeEventFilter(this);
        m_missed->endShowing();
    }
}

bool UpcomingPage::eventFilter(QObject* watched, QEvent* event) {
    if (isOfUser(event->type()) && watched->isWidgetType() &&
        static_cast<const QWidget*>(watched)->window() == window()) {
        m_missed->userActs(workspace().now());
    }
    return TodoListPage::eventFilter(watched, event);
}

void UpcomingPage::linger(const base::Uuid& id) {
    m_upcoming->linger(id);
    m_missed->linger(id);
}

void UpcomingPage::release(const base::Uuid& id) {
    m_upcoming->release(id);
    m_missed->release(id);
}

TodoListPage::Hint UpcomingPage::emptyHint() const {
    return {.what = tr("No upcoming todos."), .next = tr("Todos with a date show up here.")};
}

QString UpcomingPage::headerNote() const {
    const auto count = m_upcoming ? m_upcoming->count() : 0;
    return count == 0 ? QString() : tr("%L1 open").arg(count);
}

} // namespace korvex::ui
