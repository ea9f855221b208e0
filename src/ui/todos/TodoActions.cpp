#include "ui/todos/TodoActions.h"

#include "ui/kit/pages/Page.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/SchedulePopover.h"

namespace korvex::ui {

TodoActions::TodoActions(Page& page, const TodoServices& services, services::UndoManager& undo,
                         const Theme& theme)
    : m_page(page),
      m_services(services),
      m_undo(undo),
      m_theme(theme),
      m_undoChanges(undo.didChange().connect([this] {
          if (m_offered != 0 && !m_undo.findUndo(m_offered)) {
              m_offered = 0;
              m_page.banner().end(m_offer);
          }
      })) {}

bool TodoActions::complete(model::Entry& entry, std::optional<base::Instant> completedAt) {
    return m_page.perform(
        [&] { m_services.entries.completeTodo(entry, m_services.clock.now(), completedAt); });
}

bool TodoActions::restore(model::Entry& entry, std::optional<std::int64_t> position) {
    return m_page.perform(
        [&] { m_services.entries.restoreTodo(entry, m_services.clock.now(), position); });
}

void TodoActions::remove(model::Entry& entry, const Removal& removal) {
    if (!m_page.perform([&] { m_services.entries.deleteEntry(entry); })) {
        return;
    }
    removal.goOn();
    const auto text = isolated(shortened(removal.text));
    offerUndo(text.isEmpty() ? tr("The entry was deleted.") : tr("“%1” was deleted.").arg(text));
}

void TodoActions::offerUndo(const QString& message) {
    const auto* const step = m_undo.nextUndo();
    m_offered = step ? step->id : 0;
    m_offer = m_page.offer(message, tr("Undo"),
                           [this, id = m_offered] { Q_EMIT m_page.undoRequested(id); });
}

void TodoActions::openSchedule(model::Entry& entry, const Place& place) {
    const auto anchor = place();
    if (!anchor) {
        return;
    }
    auto* const popover = new SchedulePopover(entry, m_services, m_theme, m_page.window());
    popover->openAt(*anchor);
    popover->setFocus();
    // Once the rows have followed too.
    QObject::connect(
        popover, &SchedulePopover::followed, popover,
        [popover, place, shown = *anchor]() mutable {
            const auto now = popover->isHidden() ? shown : place();
            if (now == shown) {
                return;
            }
            if (now) {
                shown = *now;
                popover->openAt(shown);
                return;
            }
            popover->end();
        },
        Qt::QueuedConnection);
}

} // namespace korvex::ui
