#include "app/GlobalHotkeyManager.h"

#include <utility>

namespace korvex::app {

namespace {

using Kind = GlobalHotkeyManager::Issue::Kind;
using State = HotkeyStatus::State;

} // namespace

GlobalHotkeyManager::GlobalHotkeyManager(HotkeyBackend& backend, base::LogSink& log)
    : m_backend(backend),
      m_log(log, "Hotkey"),
      m_presses(backend.didPress().connect([this](const HotkeyPress& press) {
          if (isReady() && !m_isPaused && m_onPress) {
              m_onPress(press);
          }
      })),
      m_statusChanges(
          backend.didChangeStatus().connect([this](const HotkeyStatus& status) { take(status); })) {
}

GlobalHotkeyManager::~GlobalHotkeyManager() {
    m_backend.unregisterShortcut();
}

bool GlobalHotkeyManager::update(const QuickEntryShortcut& shortcut) {
    if (!shortcut.isValid() || shortcut.conflictsWithAppCommand()) {
        m_log.error(shortcut.isValid() ? "Quick Entry shortcut conflicts with an app command"
                                       : "Quick Entry shortcut is invalid");
        m_wanted.reset();
        m_backend.unregisterShortcut();
        set({.issue = Issue{Kind::invalid}});
        return false;
    }
    m_wanted = shortcut;
    if (shortcut != m_outcome.activeShortcut) {
        ask();
    }
    return isReady();
}

void GlobalHotkeyManager::ask() {
    if (m_wanted && !m_isPaused && installHandler()) {
        take(m_backend.registerShortcut(*m_wanted));
    }
}

void GlobalHotkeyManager::tryAgain() {
    if (!isReady()) {
        ask();
    }
}

void GlobalHotkeyManager::pause() {
    if (!std::exchange(m_isPaused, true)) {
        m_backend.unregisterShortcut();
    }
}

void GlobalHotkeyManager::resume() {
    if (std::exchange(m_isPaused, false)) {
        ask();
    }
}

bool GlobalHotkeyManager::follow(AppPreferences& preferences) {
    m_preferenceChanges =
        preferences.didChange().connect([this, &preferences](AppPreferences::Property property) {
            if (property == AppPreferences::Property::quickEntryShortcut) {
                update(preferences.quickEntryShortcut());
            }
        });
    return update(preferences.quickEntryShortcut());
}

std::optional<GlobalHotkeyManager::Issue>
GlobalHotkeyManager::issueOf(const QuickEntryShortcut& shortcut) {
    if (!shortcut.isValid() || shortcut.conflictsWithAppCommand()) {
        return Issue{Kind::invalid};
    }
    if (!installHandler()) {
        return m_outcome.issue;
    }
    const auto status = m_backend.probe(shortcut);
    return status.state == State::registered ? std::nullopt
                                             : std::optional(Issue{Kind::unavailable, status});
}

std::vector<QuickEntryShortcut> GlobalHotkeyManager::freeAlternatives(std::size_t most) {
    std::vector<QuickEntryShortcut> found;
    if (!installHandler()) {
        return found;
    }
    for (const auto& each : QuickEntryShortcut::alternatives()) {
        if (found.size() < most && each != m_wanted &&
            m_backend.probe(each).state == State::registered) {
            found.push_back(each);
        }
    }
    return found;
}

bool GlobalHotkeyManager::installHandler() {
    const auto status = m_backend.installHandler();
    if (status != 0) {
        m_log.error("Hot-key event handler unavailable: " + std::to_string(status));
        set({.issue = Issue{Kind::unavailable, {State::unavailable, status}}});
    }
    return status == 0;
}

void GlobalHotkeyManager::take(const HotkeyStatus& status) {
    switch (status.state) {
    case State::registered:
        set({.activeShortcut = m_wanted});
        return;
    case State::boundByDesktop:
        set({.trigger = status.trigger});
        return;
    case State::asked:
        set({});
        return;
    case State::managedByDesktop:
        set({.isManagedByDesktop = true});
        return;
    case State::declined:
        m_log.info("Quick Entry shortcut declined");
        set({.issue = Issue{Kind::unavailable, status}});
        return;
    case State::conflict:
    case State::unavailable:
        m_log.error("Quick Entry shortcut unavailable: " + std::to_string(status.code));
        set({.issue = Issue{Kind::unavailable, status}});
        return;
    }
}

void GlobalHotkeyManager::set(Outcome outcome) {
    if (m_outcome != outcome) {
        m_outcome = std::move(outcome);
        m_didChange.emit();
    }
}

} // namespace korvex::app
