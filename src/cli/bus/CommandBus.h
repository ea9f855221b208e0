#pragma once

#include "app/StoreChangeChannel.h"
#include "base/Log.h"
#include "cli/session/RunningDesktop.h"
#include "platform/bus/DesktopApplication.h"

#include <chrono>
#include <memory>

namespace korvex::cli {

/// The bus for a program that has no run loop but when it asks somebody something: connects when it
/// is first needed. A bus that does not answer holds a command up for a moment at most. One thread.
class CommandBus final : public app::StoreChangeBroadcaster, public RunningDesktop {
public:
    /// How long the desktop app has to answer.
    explicit CommandBus(base::LogSink& log, std::chrono::duration<double> desktopPatience =
                                                platform::bus::kDesktopPatience);
    ~CommandBus() override;

    /// Takes a tenth of a second at most.
    void storeChanged(const std::filesystem::path& storeFile) override;
    Answer ask(const app::Launch& launch) override;

private:
    struct Connection;

    /// Null where there is no bus, or none that answers within the limit.
    Connection* connect(std::chrono::duration<double> limit);

    base::LogSink& m_log;
    std::chrono::duration<double> m_desktopPatience;
    std::unique_ptr<Connection> m_connection;
};

} // namespace korvex::cli
