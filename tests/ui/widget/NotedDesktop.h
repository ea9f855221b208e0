#pragma once

#include "ui/widget/WidgetDesktop.h"

#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace korvex::tests {

/// A desktop that notes what widgets ask of it.
class NotedDesktop final : public ui::WidgetDesktop {
public:
    bool knowsBelow() const override { return isX11; }
    void prepare(QWindow&) override { ++prepared; }
    void open(const std::string& url) override { opened.push_back(url); }
    std::optional<bool> startsAtLogin() const override { return atLogin; }
    std::error_code setAtLogin(AtLogin what) override {
        atLogin = what == AtLogin::start;
        return {};
    }

    bool isX11 = true;
    int prepared = 0;
    std::vector<std::string> opened;
    std::optional<bool> atLogin = false;
};

} // namespace korvex::tests
