#pragma once

#include "app/AutostartFile.h"
#include "base/Log.h"
#include "base/Signal.h"
#include "platform/bus/Bus.h"
#include "ui/widget/WidgetDesktop.h"

#include <QObject>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace korvex::widget {

/// The desktop as this program knows it: its window system, its bus and its autostart. Main thread.
class DesktopOfWidgets final : public QObject, public ui::WidgetDesktop {
    Q_OBJECT

public:
    /// `bus` is asked for the app of the user's own store, and outlives this, as the log does.
    DesktopOfWidgets(std::filesystem::path dataDirectory, platform::bus::Bus& bus,
                     base::LogSink& log);

    bool knowsBelow() const override;
    void prepare(QWindow& window) override;
    void giveKeyboard(QWindow& window) override;
    void placeByKeys(QWindow& window, Placing what) override;
    void open(const std::string& url, std::function<void(Refusal)> refused) override;
    std::optional<bool> startsAtLogin() const override;
    std::error_code setAtLogin(AtLogin what) override;

protected:
    /// Remembers when the user has pressed something last.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The leave to take the keyboard that the app is given; empty for none.
    std::string token() const;
    struct Opening {
        std::string url;
        std::string token;
        std::function<void(Refusal)> refused;
    };
    void startApp(const Opening& opening);
    void refuse(const Opening& opening, Refusal why, int code) const;

    std::filesystem::path m_dataDirectory;
    bool m_isUsersOwn;
    app::AutostartFile m_autostart;
    platform::bus::Bus& m_bus;
    base::Logger m_log;
    quint64 m_pressedAt = 0;
    base::Subscription m_asked;
};

} // namespace korvex::widget
