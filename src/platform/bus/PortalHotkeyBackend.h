#pragma once

#include "app/HotkeyBackend.h"
#include "platform/bus/NameWatch.h"
#include "platform/bus/PortalRequest.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace korvex::platform::bus {

/// A shortcut as a Wayland desktop's portal for global shortcuts gives one: the desktop asks the
/// user once, keeps the keys, and reports them to who asks for them at every start. Where there is
/// no such portal, the desktop manages it. Has a connection of its own: a portal knows a program by
/// its connection, and takes its name only before anything else is asked there. Main thread; the
/// run loop and the log must outlive it.
class PortalHotkeyBackend final : public app::HotkeyBackend {
public:
    /// What has gone without the user's doing is asked for anew after so long, and after twice that
    /// the next time.
    static constexpr std::chrono::duration<double> kFirstPause{2};
    static constexpr std::chrono::duration<double> kLongestPause{600};

    /// `description` is what the desktop tells the user of the shortcut.
    PortalHotkeyBackend(std::string description, base::RunLoop& runLoop, base::LogSink& log);

    int installHandler() override;
    /// The shortcut is a proposal to the desktop, and only the first time.
    app::HotkeyStatus registerShortcut(const app::QuickEntryShortcut& shortcut) override;
    app::HotkeyStatus probe(const app::QuickEntryShortcut&) override { return m_status; }
    void unregisterShortcut() override;

    bool takesShortcuts() const override { return false; }
    app::KeyboardLayout& layout() override { return m_layout; }
    std::optional<std::uint32_t> keyCode(std::uint32_t) const override { return std::nullopt; }

    bool hasDesktopSettings() const override { return m_hasSettings; }
    void openDesktopSettings() override;

private:
    /// Asks the portal for a session with the shortcut in it, step by step.
    void begin();
    void introduce();
    void createSession();
    void bind();
    void takeBound(const Dictionary& results);
    void askVersion();
    void listen();
    /// A step has failed, or the portal has gone.
    void giveUp(const BusError& error);
    void loseSession();
    /// The same of one that the portal still has.
    void endSession();
    /// Nobody has said no, but there is no session any more, or not yet: the desktop manages it
    /// until it is asked for again, in a while.
    void waitToAskAgain();
    void setStatus(app::HotkeyStatus status);

    base::RunLoop& m_runLoop;
    base::Logger m_log;
    std::string m_description;
    app::UnknownLayout m_layout;
    std::optional<app::QuickEntryShortcut> m_wanted;
    app::HotkeyStatus m_status{app::HotkeyStatus::State::asked};
    bool m_hasSettings = false;
    bool m_isIntroduced = false;
    /// Empty where there is none.
    std::string m_session;
    /// Who has the portal's name, for as long as there is one.
    std::string m_server;
    std::chrono::duration<double> m_pause = kFirstPause;
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    Bus m_bus;
    NameWatch m_portal;
    std::unique_ptr<PortalRequest> m_request;
    base::Subscription m_asked;
    base::Subscription m_activations;
    base::Subscription m_changes;
    base::Subscription m_ends;
    base::Subscription m_owners;
    base::Subscription m_states;
};

} // namespace korvex::platform::bus
