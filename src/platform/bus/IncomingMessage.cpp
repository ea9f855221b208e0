#include "platform/bus/IncomingMessage.h"

#include <systemd/sd-bus.h>

namespace korvex::platform::bus {

namespace {

std::string textOf(const char* text) {
    return text ? text : "";
}

std::optional<BusError> errorOf(sd_bus_message* message) {
    const auto* const error = sd_bus_message_get_error(message);
    if (!error) {
        return std::nullopt;
    }
    return BusError(BusErrorCase::refused, textOf(error->name), textOf(error->message));
}

} // namespace

IncomingMessage::IncomingMessage(sd_bus_message* message)
    : m_message(sd_bus_message_ref(message)) {}

std::string IncomingMessage::sender() const {
    return textOf(sd_bus_message_get_sender(m_message.get()));
}

bool IncomingMessage::isToAll() const {
    return !sd_bus_message_get_destination(m_message.get());
}

std::string IncomingMessage::member() const {
    return textOf(sd_bus_message_get_member(m_message.get()));
}

Reply::Reply(sd_bus_message* message) : IncomingMessage(message), m_error(errorOf(message)) {}

IncomingCall::~IncomingCall() {
    if (m_message) {
        fail("org.freedesktop.DBus.Error.Failed", "The call was not carried out.");
    }
}

void IncomingCall::reply(const Arguments& arguments) {
    sd_bus_message* made = nullptr;
    const auto result = sd_bus_message_new_method_return(m_message.get(), &made);
    const MessagePointer answer(made);
    if (result >= 0) {
        if (arguments) {
            MessageWriter writer(made);
            arguments(writer);
        }
        // Who waits for it may have left, or the bus; nobody is to be told then.
        sd_bus_send(nullptr, made, nullptr);
    }
    close();
}

void IncomingCall::fail(const std::string& name, const std::string& description) {
    const sd_bus_error error{.name = name.c_str(), .message = description.c_str()};
    sd_bus_reply_method_error(m_message.get(), &error);
    close();
}

void IncomingCall::close() {
    m_message.reset();
    m_answered();
}

} // namespace korvex::platform::bus
