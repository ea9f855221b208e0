#pragma once

#include "ui/widget/WidgetDesktop.h"

#include <functional>
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
    void giveKeyboard(QWindow& window) override { withKeyboard = &window; }
    void placeByKeys(QWindow&, Placing) override { ++placings; }
    void open(const std::string& url, std::function<void(Refusal)> refused) override {
        opened.push_back(url);
        if (refusal) {
            refused(*refusal);
        }
    }
    std::optional<bool> startsAtLogin() const override { return atLogin; }
    std::error_code setAtLogin(AtLogin what) override {
        if (!error) {
            atLogin = what == AtLogin::start;
        }
        return error;
    }

    bool isX11 = true;
    int prepared = 0;
    int placings = 0;
    const QWindow* withKeyboard = nullptr;
    std::vector<std::string> opened;
    /// What is answered to whoever opens something; absent where it is opened.
    std::optional<Refusal> refusal;
    std::optional<bool> atLogin = false;
    /// Why it cannot be changed.
    std::error_code error;
};

} // namespace korvex::tests
