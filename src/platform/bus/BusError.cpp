#include "platform/bus/BusError.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace korvex::platform::bus {

namespace {

/// For the log, and for who reads it.
constexpr std::size_t kLongestText = 300;

const char* textOf(BusErrorCase which) {
    switch (which) {
    case BusErrorCase::noBus:
        return "There is no bus.";
    case BusErrorCase::busy:
        return "The bus takes no more messages.";
    case BusErrorCase::timedOut:
        return "There was no answer in time.";
    case BusErrorCase::refused:
        return "The answer was an error.";
    case BusErrorCase::unreadable:
        return "The message was not of the expected types.";
    case BusErrorCase::tooLarge:
        return "The message was too large.";
    case BusErrorCase::invalid:
        return "The message cannot be sent over the bus.";
    }
    return "";
}

std::string description(BusErrorCase which, const std::string& name, const std::string& said) {
    std::string text = textOf(which);
    if (!name.empty()) {
        text += " " + name;
    }
    if (!said.empty()) {
        text += (name.empty() ? " " : ": ") + said;
    }
    return text.substr(0, base::characterStart(text, std::min(text.size(), kLongestText)));
}

} // namespace

BusError::BusError(BusErrorCase which, std::string name, const std::string& said)
    : Error("Korvex.Bus", static_cast<int>(which), description(which, name, said)),
      m_which(which),
      m_name(std::move(name)) {}

bool BusError::isAboutNobody() const noexcept {
    constexpr std::array<std::string_view, 3> kNobody{
        "org.freedesktop.DBus.Error.ServiceUnknown", "org.freedesktop.DBus.Error.NameHasNoOwner",
        "org.freedesktop.DBus.Error.NoReply", // it left before it answered
    };
    return std::find(kNobody.begin(), kNobody.end(), m_name) != kNobody.end();
}

} // namespace korvex::platform::bus
