#include "desktop/QuickEntry.h"

#include "app/QuickEntryRequest.h"
#include "platform/qt/WindowActivation.h"

#include <QWindow>

#include <utility>

namespace korvex::desktop {

void QuickEntry::make() {
    m_state = std::make_unique<app::QuickEntryState>(app::QuickEntryState::Surroundings{
        .context = m_workspace.context,
        .preferences = m_workspace.preferences,
        .reminders = m_workspace.reminders,
        .widgets = m_workspace.widgets,
        .draftFile = m_draftFile,
        .runLoop = m_workspace.runLoop,
        .clock = m_workspace.clock,
        .log = m_workspace.log,
        .inBackground = [&threads = m_workspace.threads](
                            std::function<void()> work) { threads.start(std::move(work)); },
        .isUsersOwn = m_workspace.isUsersOwn});
    m_panel = std::make_unique<ui::QuickEntryPanel>(*m_state, m_workspace, m_theme);
    QObject::connect(m_panel.get(), &ui::QuickEntryPanel::ready, [this] { m_ready.emit(); });
    QObject::connect(m_panel.get(), &ui::QuickEntryPanel::hidden, [this] { m_hidden.emit(); });
}

void QuickEntry::open(const app::Launch& launch, const app::HotkeyPress& press) {
    if (!m_panel) {
        make();
    }
    const auto request = app::QuickEntryRequest::of(launch);
    if (m_panel->hasKeyboard() && request == app::QuickEntryRequest{}) {
        m_panel->putAway();
        return;
    }
    const auto& token = press.activationToken.empty() ? launch.token : press.activationToken;
    platform::qt::prepareActivation(token);
    m_panel->open(request);
    auto& window = *m_panel->windowHandle();
    platform::qt::finishActivation(window, token);
    platform::qt::activateCalledWindow(window, press.timestamp);
}

void QuickEntry::keepDraft() {
    if (m_state) {
        static_cast<void>(m_state->keepDraft()); // it has logged why not
    }
}

} // namespace korvex::desktop
