#include "widget/DesktopOfWidgets.h"

#include "app/Links.h"
#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "platform/bus/DesktopApplication.h"
#include "platform/qt/DesktopWindow.h"
#include "platform/qt/WindowActivation.h"
#include "platform/system/ProgramFile.h"

#include <QCoreApplication>
#include <QInputEvent>
#include <QWindow>

#include <cerrno>
#include <map>
#include <utility>
#include <vector>

namespace korvex::widget {

namespace {

using platform::bus::MethodAddress;

app::AutostartFile autostart() {
    const auto program = platform::system::ownProgram().string();
    return {
        app::userFolder("XDG_CONFIG_HOME", ".config") / "autostart",
        {.id = "dev.korvex.Widget", .name = "Korvex Widgets", .command = {program, "--at-login"}}};
}

} // namespace

DesktopOfWidgets::DesktopOfWidgets(std::filesystem::path dataDirectory, platform::bus::Bus& bus,
                                   base::LogSink& log)
    : m_dataDirectory(std::move(dataDirectory)),
      m_isUsersOwn(app::isUsersOwn(m_dataDirectory)),
      m_autostart(autostart()),
      m_bus(bus),
      m_log(log, "Widgets") {
    QCoreApplication::instance()->installEventFilter(this);
}

bool DesktopOfWidgets::knowsBelow() const {
    return platform::qt::canStandOnDesktop();
}

void DesktopOfWidgets::prepare(QWindow& window) {
    platform::qt::standOnDesktop(window);
}

void DesktopOfWidgets::giveKeyboard(QWindow& window) {
    window.requestActivate();
    // Whoever types `korvex widget` has no token to hand on: nobody knows when that was.
    platform::qt::activateCalledWindow(window, 0);
}

void DesktopOfWidgets::placeByKeys(QWindow& window, Placing what) {
    platform::qt::placeByKeys(window, what == Placing::move ? platform::qt::Placing::move
                                                            : platform::qt::Placing::resize);
}

bool DesktopOfWidgets::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (event->spontaneous() && (type == QEvent::MouseButtonRelease || type == QEvent::KeyPress)) {
        m_pressedAt = static_cast<QInputEvent*>(event)->timestamp();
    }
    return QObject::eventFilter(watched, event);
}

std::string DesktopOfWidgets::token() const {
    // On X11 the time of the press is what counts. Wayland gives tokens only to toolkits newer than
    // the one that this is built with; there the app comes forward as far as the desktop lets it.
    return knowsBelow() && m_pressedAt != 0
               ? "korvex-widget-" + std::to_string(QCoreApplication::applicationPid()) + "_TIME" +
                     std::to_string(m_pressedAt)
               : std::string();
}

void DesktopOfWidgets::open(const std::string& url, std::function<void(Refusal)> refused) {
    const Opening opening{.url = url, .token = token(), .refused = std::move(refused)};
    if (!m_isUsersOwn) {
        startApp(opening); // which hands over to one that runs
        return;
    }
    m_asked = platform::bus::callDesktop(
        m_bus, {.links = {url}, .token = opening.token}, MethodAddress::Start::allowed,
        [this, opening](const platform::bus::Reply& reply) {
            const auto* const error = reply.error();
            if (!error) {
                return;
            }
            if (error->which() == platform::bus::BusErrorCase::timedOut) {
                refuse(opening, Refusal::noAnswer, error->code());
            } else {
                startApp(opening);
            }
        });
}

void DesktopOfWidgets::startApp(const Opening& opening) {
    std::vector<std::string> arguments{"--", opening.url};
    if (!m_isUsersOwn) {
        arguments.insert(arguments.begin(), {"--data-dir", m_dataDirectory.string()});
    }
    std::map<std::string, std::string> environment;
    if (!opening.token.empty()) {
        environment["DESKTOP_STARTUP_ID"] = opening.token;
    }
    if (!platform::system::startBeside("korvex-desktop", arguments, environment)) {
        refuse(opening, Refusal::notInstalled, ENOENT);
    }
}

void DesktopOfWidgets::refuse(const Opening& opening, Refusal why, int code) const {
    const auto link = app::Link::parse(opening.url);
    const auto isEntry = link && link->kind == app::Link::Kind::entry;
    m_log.warning((isEntry ? "Unable to open widget entry: " : "Unable to open widget board: ") +
                  std::to_string(code));
    opening.refused(why);
}

std::optional<bool> DesktopOfWidgets::startsAtLogin() const {
    return m_isUsersOwn ? std::optional(m_autostart.isOn()) : std::nullopt;
}

std::error_code DesktopOfWidgets::setAtLogin(AtLogin what) {
    return what == AtLogin::start ? m_autostart.turnOn() : m_autostart.turnOff();
}

} // namespace korvex::widget
