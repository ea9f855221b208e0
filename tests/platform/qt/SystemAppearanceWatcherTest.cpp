#include "platform/qt/SystemAppearanceWatcher.h"

#include "support/SessionBus.h"
#include "support/TemporaryFolder.h"

#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTest>

#include <gtest/gtest.h>

namespace korvex::platform::qt {
namespace {

using Appearance = SystemAppearanceWatcher::Appearance;
using Scheme = SystemAppearanceWatcher::ColorScheme;
using Contrast = SystemAppearanceWatcher::Contrast;
using Motion = SystemAppearanceWatcher::Motion;

constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";

QVariant wrapped(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

/// The portal of a desktop that knows the keys which have been set.
class Portal final : public QDBusVirtualObject {
public:
    explicit Portal(QDBusConnection bus) : m_bus(std::move(bus)) {
        m_bus.registerVirtualObject(kPath, this);
        m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    }
    void set(const QString& group, const QString& key, const QVariant& value) {
        m_values[group + key] = value;
        m_bus.send(QDBusMessage::createSignal(kPath, kInterface, QStringLiteral("SettingChanged"))
                   << group << key << wrapped(value));
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& asked, const QDBusConnection& bus) override {
        const auto names = asked.arguments();
        const auto value = m_values.value(names.at(0).toString() + names.at(1).toString());
        return bus.send(value.isValid() ? asked.createReply(wrapped(wrapped(value)))
                                        : asked.createErrorReply(QDBusError::Failed, {}));
    }

private:
    QDBusConnection m_bus;
    QMap<QString, QVariant> m_values;
};

/// What a watcher says of one.
struct Listener {
    explicit Listener(const QDBusConnection& bus) : watcher(bus) {}
    bool hears(std::size_t count) const {
        return QTest::qWaitFor([&] { return heard.size() >= count; });
    }

    SystemAppearanceWatcher watcher;
    std::vector<Appearance> heard;
    base::Subscription listening =
        watcher.changed().connect([this](const auto& now) { heard.push_back(now); });
};

TEST(SystemAppearanceWatcher, TellsAllAnswersAtOnceAndThenEachDifference) {
    const tests::TemporaryFolder folder;
    const tests::SessionBus daemon(folder / "bus");
    const auto connected = [&](const char* name) {
        return QDBusConnection::connectToBus(QString::fromStdString(daemon.address()), name);
    };
    Portal portal(connected("portal"));
    const auto bus = connected("watcher");
    Listener following(bus);
    std::vector<Appearance> expected{{}};
    struct Case {
        const char* key;
        QVariant value;
        Appearance told;
    };
    for (const auto& each : {
             Case{"color-scheme", 2U, {Scheme::light, Contrast::usual, Motion::usual}},
             Case{"color-scheme", 1U, {Scheme::dark, Contrast::usual, Motion::usual}},
             Case{"contrast", 1U, {Scheme::dark, Contrast::high, Motion::usual}},
             Case{"reduced-motion", 1U, {Scheme::dark, Contrast::high, Motion::reduced}},
             Case{"enable-animations", false, {Scheme::dark, Contrast::high, Motion::reduced}},
             Case{"reduced-motion", 0U, {Scheme::dark, Contrast::high, Motion::reduced}},
             Case{"enable-animations", true, {Scheme::dark, Contrast::high, Motion::usual}},
             Case{"accent-color", 1U, {Scheme::dark, Contrast::high, Motion::usual}},
             Case{"color-scheme", 0U, {Scheme::noPreference, Contrast::high, Motion::usual}},
             Case{"enable-animations",
                  false,
                  {Scheme::noPreference, Contrast::high, Motion::reduced}},
         }) {
        const auto isGnome = each.value.typeId() == QMetaType::Bool;
        portal.set(isGnome ? "org.gnome.desktop.interface" : "org.freedesktop.appearance", each.key,
                   each.value);
        if (each.told != expected.back()) {
            expected.push_back(each.told);
        }
        EXPECT_TRUE(following.hears(expected.size() - 1)) << each.key;
    }
    expected.erase(expected.begin());
    EXPECT_EQ(following.heard, expected);

    const Listener asking(bus);
    EXPECT_TRUE(asking.hears(1));
    EXPECT_EQ(asking.heard, std::vector{expected.back()});
    QDBusConnection::disconnectFromBus("portal");
    QDBusConnection::disconnectFromBus("watcher");
}

} // namespace
} // namespace korvex::platform::qt
