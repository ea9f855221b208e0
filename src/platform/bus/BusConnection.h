#pragma once

#include "base/RunLoop.h"

#include <functional>
#include <memory>
#include <string>

struct sd_bus;

namespace korvex::platform::bus {

/// One connection to a bus, from the first step to its end, driven by a run loop that it never
/// blocks. Main thread.
class BusConnection {
public:
    struct Listener {
        /// The bus has given the connection a name: now it can be used.
        std::function<void()> ready;
        /// It came to an end, or never got ready; last of all. May destroy the connection.
        std::function<void()> ended;
    };

    BusConnection(base::RunLoop& runLoop, const std::string& address, Listener listener);
    ~BusConnection();

    /// For the calls of sd-bus; after one that sends something, `wrote` is called. Null when the
    /// address is none.
    sd_bus* get() const { return m_bus.get(); }
    void wrote();
    /// How many messages wait to be taken by the bus.
    std::size_t unsentCount() const;

private:
    struct CloseBus {
        void operator()(sd_bus* bus) const;
    };
    enum class Step { none, done, ended };

    void process();
    Step processOne();
    /// Watches for what the connection waits for now.
    void await();
    void processSoon();
    void end();

    base::RunLoop& m_runLoop;
    Listener m_listener;
    std::unique_ptr<sd_bus, CloseBus> m_bus;
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    int m_watched = -1;
    std::unique_ptr<base::RunLoop::Timer> m_limit;
    bool m_isReady = false;
    bool m_isProcessing = false;
    bool m_willProcess = false;
    bool m_hasEnded = false;
    /// Gone with this object: handlers and posted work may outlive it.
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::platform::bus
