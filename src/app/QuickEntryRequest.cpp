#include "app/QuickEntryRequest.h"

namespace korvex::app {

namespace {

constexpr std::string_view kBoard = "board=";
constexpr std::string_view kType = "type=";

} // namespace

std::optional<model::EntryType> entryTypeNamed(std::string_view name) {
    const auto type = model::entryType(name);
    return name == rawValue(type) ? std::optional(type) : std::nullopt;
}

QuickEntryRequest QuickEntryRequest::of(const Launch& launch) {
    QuickEntryRequest request;
    for (const std::string_view each : launch.parameters) {
        if (each.starts_with(kBoard)) {
            request.board = base::Uuid::parse(each.substr(kBoard.size()));
        } else if (each.starts_with(kType)) {
            request.type = entryTypeNamed(each.substr(kType.size()));
        }
    }
    return request;
}

Launch QuickEntryRequest::launch() const {
    Launch launch{.action = kQuickEntryAction};
    if (board) {
        launch.parameters.push_back(std::string(kBoard) + board->text());
    }
    if (type) {
        launch.parameters.push_back(std::string(kType) + std::string(rawValue(*type)));
    }
    return launch;
}

} // namespace korvex::app
