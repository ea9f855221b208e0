#pragma once

#include "platform/bus/BusError.h"
#include "platform/bus/MessageReader.h"
#include "platform/bus/MessageWriter.h"
#include "platform/bus/SdBusPointers.h"

#include <functional>
#include <optional>
#include <string>

namespace korvex::platform::bus {

/// What another program has sent: a signal, or as `Reply` and `IncomingCall` more than that.
class IncomingMessage {
public:
    /// Keeps the message; null for none.
    explicit IncomingMessage(sd_bus_message* message);

    /// Who sent it, by the name that no other connection has.
    std::string sender() const;
    /// Whether it was sent to all who listen, which the bus's own filter has let through.
    bool isToAll() const;
    std::string member() const;

    /// Its arguments, from the first on: one type gives a value, several give a tuple, none gives
    /// nothing. More than these may follow. Throws BusError.
    template <typename... Types>
    auto read(const Bounds& bounds = {}) const {
        MessageReader reader(m_message.get(), bounds);
        if constexpr (sizeof...(Types) == 1) {
            return reader.take<Types...>();
        } else if constexpr (sizeof...(Types) > 1) {
            return std::tuple<Types...>{reader.take<Types>()...};
        }
    }

protected:
    MessagePointer m_message;
};

using IncomingSignal = IncomingMessage;

/// The answer to a call, or why there is none.
class Reply final : public IncomingMessage {
public:
    /// An answer, which may be an error.
    explicit Reply(sd_bus_message* message);
    /// There is none.
    explicit Reply(BusError error) : IncomingMessage(nullptr), m_error(std::move(error)) {}

    /// Null when the call has succeeded.
    const BusError* error() const { return m_error ? &*m_error : nullptr; }

    /// Throws the error, where it is one.
    template <typename... Types>
    auto read(const Bounds& bounds = {}) const {
        if (m_error) {
            throw BusError(*m_error);
        }
        return IncomingMessage::read<Types...>(bounds);
    }

private:
    std::optional<BusError> m_error;
};

/// A call of one of our methods. It is answered once, now or later; one that goes without an answer
/// is answered with an error.
class IncomingCall final : public IncomingMessage {
public:
    /// `answered` is called when an answer was sent.
    IncomingCall(sd_bus_message* message, std::function<void()> answered)
        : IncomingMessage(message), m_answered(std::move(answered)) {}
    IncomingCall(IncomingCall&&) = default;
    IncomingCall& operator=(IncomingCall&&) = delete;
    ~IncomingCall();

    /// Whether it waits for its answer here, and not where it was moved to.
    bool isOpen() const { return m_message != nullptr; }
    /// Throws BusError for arguments that cannot be sent; then it has not been answered yet.
    void reply(const Arguments& arguments = {});
    void fail(const std::string& name, const std::string& description);

private:
    void close();

    std::function<void()> m_answered;
};

} // namespace korvex::platform::bus
