#include "agent/GnomeNotificationSwitch.h"

#include <string>
#include <string_view>
#include <utility>

namespace korvex::agent {

namespace {

constexpr const char* kProgram = "gsettings";
constexpr const char* kListAll = "list-recursively";
constexpr const char* kGeneral = "org.gnome.desktop.notifications";
/// It makes a path of the name of our desktop file.
constexpr const char* kOwn = "org.gnome.desktop.notifications.application:"
                             "/org/gnome/desktop/notifications/application/dev-korvex-korvex/";
constexpr std::string_view kAllPaths = "/org/gnome/desktop/notifications/";
constexpr std::string_view kBannersOff = " show-banners false";
constexpr std::string_view kOff = " enable false";

bool hasLine(const std::string& said, std::string_view end) {
    return said.find(std::string(end) + "\n") != std::string::npos;
}

} // namespace

GnomeNotificationSwitch::GnomeNotificationSwitch(platform::bus::Bus& bus, base::RunLoop& runLoop,
                                                 Tell tell)
    : m_runLoop(runLoop), m_tell(std::move(tell)) {
    m_signals = bus.match({.interface = "ca.desrt.dconf.Writer", .member = "Notify"},
                          [this](const platform::bus::IncomingSignal& signal) {
                              // What was changed, or the folder of it.
                              const auto path = signal.read<std::string>();
                              if (path.starts_with(kAllPaths) || kAllPaths.starts_with(path)) {
                                  look();
                              }
                          });
}

void GnomeNotificationSwitch::look() {
    m_general.reset();
    m_own.reset();
    const auto ask = [this](auto& asked, const char* schema, auto& answer) {
        asked.emplace(m_runLoop, kProgram, std::vector<std::string>{kListAll, schema},
                      [this, &answer](const std::optional<std::string>& said) {
                          answer = said;
                          said ? tellOnceKnown() : m_tell(std::nullopt);
                      });
    };
    ask(m_askedGeneral, kGeneral, m_general);
    ask(m_askedOwn, kOwn, m_own);
}

void GnomeNotificationSwitch::tellOnceKnown() {
    if (m_general && m_own) {
        m_tell(platform::bus::NotificationSetting{.isOff = hasLine(*m_own, kOff),
                                                  .isQuieted = hasLine(*m_general, kBannersOff) ||
                                                               hasLine(*m_own, kBannersOff)});
    }
}

} // namespace korvex::agent
