#include "BusFixture.h"

#include "platform/bus/NameClaim.h"
#include "platform/bus/OfferedObject.h"
#include "platform/bus/SystemAppearanceWatcher.h"

namespace korvex::platform::bus {
namespace {

using Appearance = app::SystemAppearance;
using Scheme = app::SystemAppearance::Scheme;
using Contrast = app::SystemAppearance::Contrast;
using Motion = app::SystemAppearance::Motion;

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";

/// The portal of a desktop that knows the keys which have been set.
class Portal {
public:
    explicit Portal(Bus& bus)
        : m_object(bus, kPath,
                   {.name = kInterface,
                    .methods = {Interface::method<std::string, std::string>(
                        "Read",
                        [this](IncomingCall& call, const auto& group, const auto& key) {
                            const auto found = m_values.find(group + key);
                            if (found == m_values.end()) {
                                call.fail("org.freedesktop.portal.Error.NotFound", "");
                            } else {
                                call.reply(arguments(found->second));
                            }
                        },
                        "v")},
                    .signals = {{.name = "SettingChanged", .carries = "ssv"}}}),
          m_name(bus, "org.freedesktop.portal.Desktop") {}

    void set(const std::string& group, const std::string& key, const Value& value) {
        m_values[group + key] = value;
        m_object.emit("SettingChanged", arguments(group, key, value));
    }
    bool isThere() const { return m_name.state() == NameClaim::State::owned; }

private:
    std::map<std::string, Value> m_values;
    OfferedObject m_object;
    NameClaim m_name;
};

class SystemAppearanceWatcherTest : public tests::BusFixture {
protected:
    Bus m_desktop{WhichBus::session, m_loop, m_log};
    Bus m_bus{WhichBus::session, m_loop, m_log};
};

TEST_F(SystemAppearanceWatcherTest, TellsAllAnswersAtOnceAndThenEachDifference) {
    startDaemon();
    Portal portal(m_desktop);
    connect(m_desktop);
    ASSERT_TRUE(m_loop.runUntil([&] { return portal.isThere(); }));
    SystemAppearanceWatcher watcher(m_bus);
    std::vector<Appearance> heard;
    const auto listening =
        watcher.changed().connect([&](const auto& now) { heard.push_back(now); });
    connect(m_bus);
    settle(m_bus);
    std::vector<Appearance> expected{{}};
    struct Case {
        const char* key;
        Value value;
        Appearance told;
    };
    const Value zero(std::uint32_t{0});
    const Value one(std::uint32_t{1});
    const Value two(std::uint32_t{2});
    for (const auto& each : {
             Case{"color-scheme", two, {Scheme::light, Contrast::usual, Motion::usual}},
             Case{"color-scheme", one, {Scheme::dark, Contrast::usual, Motion::usual}},
             Case{"contrast", one, {Scheme::dark, Contrast::high, Motion::usual}},
             Case{"reduced-motion", one, {Scheme::dark, Contrast::high, Motion::still}},
             Case{"enable-animations", Value(false), {Scheme::dark, Contrast::high, Motion::still}},
             Case{"reduced-motion", zero, {Scheme::dark, Contrast::high, Motion::still}},
             Case{"enable-animations", Value(true), {Scheme::dark, Contrast::high, Motion::usual}},
             Case{"accent-color", one, {Scheme::dark, Contrast::high, Motion::usual}},
             Case{"contrast", Value("much"), {Scheme::dark, Contrast::usual, Motion::usual}},
             Case{"color-scheme", zero, {Scheme::unknown, Contrast::usual, Motion::usual}},
             Case{"enable-animations",
                  Value(false),
                  {Scheme::unknown, Contrast::usual, Motion::still}},
         }) {
        portal.set(each.value.as<bool>() ? "org.gnome.desktop.interface"
                                         : "org.freedesktop.appearance",
                   each.key, each.value);
        if (each.told != expected.back()) {
            expected.push_back(each.told);
        }
        EXPECT_TRUE(m_loop.runUntil([&] { return heard.size() + 1 >= expected.size(); }))
            << each.key;
    }
    expected.erase(expected.begin());
    EXPECT_EQ(heard, expected);

    Bus another(WhichBus::session, m_loop, m_log);
    SystemAppearanceWatcher asking(another);
    std::vector<Appearance> told;
    const auto hearing = asking.changed().connect([&](const auto& now) { told.push_back(now); });
    connect(another);
    EXPECT_TRUE(m_loop.runUntil([&] { return !told.empty(); }));
    EXPECT_EQ(told, std::vector{expected.back()});
}

} // namespace
} // namespace korvex::platform::bus
