#pragma once

#include "base/Error.h"

#include <string>

namespace korvex::platform::bus {

/// Why something could not be said to another program, or what it said could not be understood.
enum class BusErrorCase {
    noBus,      ///< there is none, or it has gone meanwhile
    busy,       ///< the bus takes nothing more: too much waits to be sent
    timedOut,   ///< no answer within the time limit
    refused,    ///< the answer was an error; `name` says which
    unreadable, ///< the message is not of the types that it should have
    tooLarge,   ///< it exceeds a bound
    invalid,    ///< what was to be sent is nothing that the bus carries
};

class BusError final : public base::Error {
public:
    /// `said` is what the other program says; no more of it is kept than a line or two.
    explicit BusError(BusErrorCase which, std::string name = {}, const std::string& said = {});

    BusErrorCase which() const noexcept { return m_which; }
    /// Of an error that was answered, as "org.freedesktop.DBus.Error.ServiceUnknown".
    const std::string& name() const noexcept { return m_name; }
    /// Whether nobody has the name that was asked: it is not running, and cannot be started.
    bool isAboutNobody() const noexcept;
    /// Whether the same connection may answer the same later.
    bool isForNow() const noexcept {
        return m_which == BusErrorCase::timedOut || m_which == BusErrorCase::busy;
    }

private:
    BusErrorCase m_which;
    std::string m_name;
};

} // namespace korvex::platform::bus
