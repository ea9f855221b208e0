#pragma once

#include <functional>
#include <optional>
#include <string>
#include <system_error>

class QWindow;

namespace korvex::ui {

/// What widgets ask of the desktop and of the program that shows them. Main thread.
class WidgetDesktop {
public:
    virtual ~WidgetDesktop() = default;

    /// Whether a window can stand below all others, on every one of the user's desktops.
    virtual bool knowsBelow() const = 0;
    /// To be called before the window is shown, each time: it stands on every desktop, and in no
    /// list of windows.
    virtual void prepare(QWindow& window) = 0;
    /// To be called after the window is shown, when the user has asked for it: it takes the
    /// keyboard, to which else only the pointer leads, since no list of windows has it.
    virtual void giveKeyboard(QWindow& window) = 0;
    enum class Placing { move, resize };
    /// Lets the user do it by arrow keys; to be called where windows can stand below others.
    virtual void placeByKeys(QWindow& window, Placing what) = 0;

    enum class Refusal { notInstalled, noAnswer };
    /// Opens a link in the app. Where that fails `refused` is told why, at once or later.
    virtual void open(const std::string& url, std::function<void(Refusal)> refused) = 0;

    /// Whether the widgets come back when the user logs in; absent where that cannot be had.
    virtual std::optional<bool> startsAtLogin() const = 0;
    enum class AtLogin { start, doNothing };
    [[nodiscard]] virtual std::error_code setAtLogin(AtLogin what) = 0;
};

} // namespace korvex::ui
