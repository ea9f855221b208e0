#include "platform/bus/DesktopApplication.h"

namespace korvex::platform::bus {

namespace {

constexpr const char* kInterface = "org.freedesktop.Application";
/// Launchers send either, or both.
constexpr const char* kToken = "activation-token";
constexpr const char* kStartupId = "desktop-startup-id";

std::string tokenOf(const Dictionary& platformData) {
    for (const auto* name : {kToken, kStartupId}) {
        if (const auto* const token = find<std::string>(platformData, name);
            token && !token->empty() && token->size() <= app::kLongestToken) {
            return *token;
        }
    }
    return {};
}

Dictionary platformDataOf(const app::Launch& launch) {
    if (launch.token.empty()) {
        return {};
    }
    return {{kToken, Value(launch.token)}, {kStartupId, Value(launch.token)}};
}

/// Those that are texts; our actions know no others.
std::vector<std::string> textsOf(const std::vector<Value>& values) {
    std::vector<std::string> texts;
    for (const auto& value : values) {
        if (const auto* const text = value.as<std::string>()) {
            texts.push_back(*text);
        }
    }
    return texts;
}

} // namespace

DesktopApplication::DesktopApplication(Bus& bus)
    : m_object(bus, app::kDesktopPath,
               {.name = kInterface,
                .methods = {
                    Interface::method<Dictionary>("Activate",
                                                  [this](IncomingCall& call, const auto& data) {
                                                      call.reply();
                                                      m_launched.emit({.token = tokenOf(data)});
                                                  }),
                    Interface::method<std::vector<std::string>, Dictionary>(
                        "Open",
                        [this](IncomingCall& call, const auto& links, const auto& data) {
                            call.reply();
                            m_launched.emit({.links = links, .token = tokenOf(data)});
                        }),
                    Interface::method<std::string, std::vector<Value>, Dictionary>(
                        "ActivateAction",
                        [this](IncomingCall& call, const auto& action, const auto& values,
                               const auto& data) {
                            call.reply();
                            m_launched.emit({.action = action,
                                             .parameters = textsOf(values),
                                             .token = tokenOf(data)});
                        }),
                }}) {}

base::Subscription callDesktop(Bus& bus, const app::Launch& launch, MethodAddress::Start start,
                               Bus::Answer answer, std::chrono::duration<double> patience) {
    MethodAddress method{.destination = app::kDesktopName,
                         .path = app::kDesktopPath,
                         .interface = kInterface,
                         .member = "Activate",
                         .start = start};
    const auto data = platformDataOf(launch);
    auto sent = arguments(data);
    if (!launch.action.empty()) {
        method.member = "ActivateAction";
        std::vector<Value> parameters;
        for (const auto& text : launch.parameters) {
            parameters.emplace_back(text);
        }
        sent = arguments(launch.action, std::move(parameters), data);
    } else if (!launch.links.empty()) {
        method.member = "Open";
        sent = arguments(launch.links, data);
    }
    return bus.call(method, sent, std::move(answer), patience);
}

} // namespace korvex::platform::bus
