#include "platform/x11/X11HotkeyBackend.h"

#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace korvex::platform::x11 {

namespace {

using State = app::HotkeyStatus::State;

/// The window manager's name for itself; another window there is another window manager, and what
/// the former had grabbed is free.
constexpr std::string_view kWindowManagerProperty = "_NET_SUPPORTING_WM_CHECK";

/// The highest bit says that another client has sent the event.
constexpr std::uint8_t kEventTypes = 0x7F;

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

} // namespace

X11HotkeyBackend::X11HotkeyBackend(base::RunLoop& runLoop, std::string display)
    : m_runLoop(runLoop), m_display(std::move(display)) {}

X11HotkeyBackend::~X11HotkeyBackend() = default; // the server gives up what its client had

int X11HotkeyBackend::installHandler() {
    return m_connection ? 0 : connect();
}

int X11HotkeyBackend::connect() {
    m_connection.reset(xcb_connect(m_display.empty() ? nullptr : m_display.c_str(), nullptr));
    if (const auto fault = xcb_connection_has_error(m_connection.get()); fault != 0) {
        m_connection.reset();
        return fault;
    }
    if (!startXkb()) {
        m_connection.reset();
        return XCB_IMPLEMENTATION;
    }
    watchRoots();
    m_keyboard = std::make_unique<XkbKeyboard>(m_connection.get());
    m_keyboard->load(); // one without keys may get some later
    m_watch = m_runLoop.watch(xcb_get_file_descriptor(m_connection.get()),
                              base::RunLoop::Interest::reading, [this] { readEvents(); });
    readEventsSoon();
    return 0;
}

bool X11HotkeyBackend::startXkb() {
    auto* const connection = m_connection.get();
    if (xkb_x11_setup_xkb_extension(
            connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
            XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &m_xkbEvent, nullptr) == 0) {
        return false;
    }
    // A key that is held is then pressed again and again, and released once.
    xcb_discard_reply(connection, xcb_xkb_per_client_flags(
                                      connection, XCB_XKB_ID_USE_CORE_KBD,
                                      XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT,
                                      XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT, 0, 0, 0)
                                      .sequence);
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY |
                                      XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                      XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr std::uint16_t kKeyboards = XCB_XKB_NKN_DETAIL_KEYCODES;
    constexpr std::uint16_t kMaps = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                    XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                                    XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    // Of the state the group alone: it changes with every modifier that anybody presses.
    constexpr std::uint16_t kStates = XCB_XKB_STATE_PART_GROUP_STATE;
    xcb_xkb_select_events_details_t details{};
    details.affectNewKeyboard = kKeyboards;
    details.newKeyboardDetails = kKeyboards;
    details.affectState = kStates;
    details.stateDetails = kStates;
    xcb_xkb_select_events_aux(connection, XCB_XKB_ID_USE_CORE_KBD, kEvents, 0, 0, kMaps, kMaps,
                              &details);
    return true;
}

void X11HotkeyBackend::watchRoots() {
    auto* const connection = m_connection.get();
    const Answer<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(kWindowManagerProperty.size()),
                        kWindowManagerProperty.data()),
        nullptr));
    m_windowManagerAtom = atom ? atom->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
    constexpr std::uint32_t kEvents = XCB_EVENT_MASK_PROPERTY_CHANGE;
    for (const auto root : roots()) {
        xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &kEvents);
    }
    xcb_flush(connection);
}

std::vector<xcb_window_t> X11HotkeyBackend::roots() const {
    std::vector<xcb_window_t> result;
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())); each.rem > 0;
         xcb_screen_next(&each)) {
        result.push_back(each.data->root);
    }
    return result;
}

app::HotkeyStatus X11HotkeyBackend::registerShortcut(const app::QuickEntryShortcut& shortcut) {
    m_wanted = shortcut;
    if (m_connection) {
        m_status = grabWanted();
        askAgainLater();
        readEventsSoon();
    }
    return m_status;
}

app::HotkeyStatus X11HotkeyBackend::probe(const app::QuickEntryShortcut& shortcut) {
    if (!m_connection) {
        return m_status;
    }
    const auto grabs = grabsFor(shortcut);
    if (grabs == m_grabs && !grabs.empty()) {
        return {State::registered};
    }
    const auto status = tryToGrab(grabs);
    if (status.state == State::registered) {
        ungrab(grabs);
    }
    readEventsSoon();
    return status;
}

void X11HotkeyBackend::unregisterShortcut() {
    m_wanted.reset();
    m_askTimer.reset();
    if (m_connection) {
        grabWanted();
        readEventsSoon();
    }
}

std::vector<X11HotkeyBackend::Grab>
X11HotkeyBackend::grabsFor(const app::QuickEntryShortcut& shortcut) const {
    std::vector<Grab> grabs;
    const auto combination = m_keyboard->combination(shortcut);
    if (!combination) {
        return grabs;
    }
    for (const auto root : roots()) {
        for (const auto locks : m_keyboard->lockCombinations()) {
            grabs.push_back({root,
                             {combination->keycode,
                              static_cast<std::uint16_t>(combination->modifiers | locks)}});
        }
    }
    return grabs;
}

app::HotkeyStatus X11HotkeyBackend::tryToGrab(const std::vector<Grab>& grabs) {
    if (grabs.empty()) {
        return {State::unavailable, app::HotkeyStatus::kNoSuchKey};
    }
    auto* const connection = m_connection.get();
    std::vector<xcb_void_cookie_t> requests;
    requests.reserve(grabs.size());
    for (const auto& [root, combination] : grabs) {
        requests.push_back(xcb_grab_key_checked(connection, 0, root, combination.modifiers,
                                                combination.keycode, XCB_GRAB_MODE_ASYNC,
                                                XCB_GRAB_MODE_ASYNC));
    }
    int refusal = 0;
    for (const auto request : requests) {
        const Answer<xcb_generic_error_t> error(xcb_request_check(connection, request));
        refusal = error && refusal == 0 ? error->error_code : refusal;
    }
    if (const auto fault = xcb_connection_has_error(connection); fault != 0) {
        return {State::unavailable, fault};
    }
    if (refusal == 0) {
        return {State::registered};
    }
    // With some locks on it would work and with others not.
    ungrab(grabs);
    return {refusal == XCB_ACCESS ? State::conflict : State::unavailable, refusal};
}

void X11HotkeyBackend::ungrab(const std::vector<Grab>& grabs) {
    xcb_void_cookie_t last{};
    for (const auto& [root, combination] : grabs) {
        last = xcb_ungrab_key_checked(m_connection.get(), combination.keycode, root,
                                      combination.modifiers);
    }
    if (!grabs.empty()) {
        // Whoever is told that it is free can have it.
        const Answer<xcb_generic_error_t> ignored(xcb_request_check(m_connection.get(), last));
    }
}

app::HotkeyStatus X11HotkeyBackend::grabWanted() {
    auto grabs = m_wanted ? grabsFor(*m_wanted) : std::vector<Grab>();
    if (grabs == m_grabs && !grabs.empty()) {
        return {State::registered};
    }
    ungrab(std::exchange(m_grabs, {}));
    m_isDown = false;
    const auto status = tryToGrab(grabs);
    if (status.state == State::registered) {
        m_grabs = std::move(grabs);
    }
    return status;
}

void X11HotkeyBackend::rebuild() {
    m_rebuildTimer.reset();
    m_keyboard->load();
    readEventsSoon();
    if (m_wanted) {
        setStatus(grabWanted());
        askAgainLater();
    }
}

void X11HotkeyBackend::askAgainLater() {
    m_askTimer.reset();
    if (m_status.state == State::conflict) {
        m_askTimer = m_runLoop.callAfter(kAskAgain, [this] {
            const auto status = grabWanted();
            readEventsSoon();
            setStatus(status);
            askAgainLater();
        });
    }
}

void X11HotkeyBackend::readEvents() {
    m_readTimer.reset();
    while (m_connection) {
        const Answer<xcb_generic_event_t> event(xcb_poll_for_event(m_connection.get()));
        if (!event) {
            break;
        }
        take(*event);
    }
    if (m_connection && xcb_connection_has_error(m_connection.get()) != 0) {
        lose();
    }
}

void X11HotkeyBackend::readEventsSoon() {
    m_readTimer = m_runLoop.callAfter(std::chrono::seconds(0), [this] { readEvents(); });
}

void X11HotkeyBackend::take(const xcb_generic_event_t& event) {
    const auto rebuildSoon = [this] {
        m_rebuildTimer = m_runLoop.callAfter(kQuiet, [this] { rebuild(); });
    };
    const auto type = static_cast<std::uint8_t>(event.response_type & kEventTypes);
    if (type == XCB_KEY_PRESS) {
        takePress(as<xcb_key_press_event_t>(event));
    } else if (type == XCB_KEY_RELEASE) {
        // While a key is held after a modifier was let go, it repeats.
        if (isOurs(as<xcb_key_release_event_t>(event).detail)) {
            m_isDown = false;
        }
    } else if (type == XCB_MAPPING_NOTIFY) {
        rebuildSoon();
    } else if (type == XCB_PROPERTY_NOTIFY) {
        if (as<xcb_property_notify_event_t>(event).atom == m_windowManagerAtom) {
            rebuildSoon();
        }
    } else if (type == m_xkbEvent) {
        const auto& state = as<xcb_xkb_state_notify_event_t>(event);
        if (state.xkbType == XCB_XKB_STATE_NOTIFY) {
            m_keyboard->setGroup(state.group);
        } else {
            rebuildSoon();
        }
    }
}

bool X11HotkeyBackend::isOurs(xcb_keycode_t keycode) const {
    return std::any_of(m_grabs.begin(), m_grabs.end(),
                       [&](const Grab& each) { return each.combination.keycode == keycode; });
}

void X11HotkeyBackend::takePress(const xcb_key_press_event_t& press) {
    if (isOurs(press.detail) && !std::exchange(m_isDown, true)) {
        didPress().emit({.timestamp = press.time, .activationToken = {}});
    }
}

void X11HotkeyBackend::setStatus(const app::HotkeyStatus& status) {
    if (m_status != status) {
        m_status = status;
        didChangeStatus().emit(status);
    }
}

void X11HotkeyBackend::lose() {
    const auto fault = xcb_connection_has_error(m_connection.get());
    m_rebuildTimer.reset();
    m_askTimer.reset();
    m_readTimer.reset();
    m_grabs.clear();
    m_keyboard.reset();
    m_watch.reset();
    m_connection.reset();
    const app::HotkeyStatus status{State::unavailable, fault};
    if (m_wanted) {
        setStatus(status);
    } else {
        m_status = status;
    }
}

} // namespace korvex::platform::x11
