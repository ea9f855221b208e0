#include "app/AgentStatus.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korvex::app {

namespace {

using State = AgentReminder::State;

constexpr std::array<std::pair<State, std::string_view>, 4> kNames{{
    {State::pending, "pending"},
    {State::shown, "shown"},
    {State::closed, "closed"},
    {State::withdrawn, "withdrawn"},
}};

} // namespace

std::string_view nameOf(State state) {
    return kNames.at(static_cast<std::size_t>(state)).second;
}

std::optional<State> agentReminderState(std::string_view name) {
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&](const auto& each) { return each.second == name; });
    return found == kNames.end() ? std::nullopt : std::optional(found->first);
}

} // namespace korvex::app
