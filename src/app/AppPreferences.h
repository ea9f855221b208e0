#pragma once

#include "app/UserDefaults.h"
#include "base/Log.h"
#include "base/Signal.h"
#include "base/Uuid.h"

#include <array>
#include <optional>

namespace korvex::app {

/// The user's settings as the windows need them now: malformed values read as their defaults, a set
/// one is written at once. One a program; main thread; the defaults must outlive it.
class AppPreferences {
public:
    enum class Appearance { system, light, dark };
    enum class BoardSpacing { compact, comfortable };

    /// The sizes that can be chosen, in points; there is nothing between 16 and 18, nor odd above.
    static constexpr std::array kFontSizes{10, 11, 12, 13, 14, 15, 16, 18, 20, 22, 24};
    static constexpr int kStandardFontSize = 13;

    AppPreferences(UserDefaults& defaults, base::LogSink& log);

    Appearance appearance() const { return m_appearance; }
    void setAppearance(Appearance appearance);
    /// One of `kFontSizes`.
    int fontSize() const { return m_fontSize; }
    void setFontSize(int fontSize);
    BoardSpacing boardSpacing() const { return m_boardSpacing; }
    void setBoardSpacing(BoardSpacing spacing);
    /// Minutes after midnight, 0 to 1439.
    int defaultReminderMinutes() const { return m_defaultReminderMinutes; }
    /// The board last shown in the main window; may be gone by now.
    std::optional<base::Uuid> mainBoardSelectedBoardID() const {
        return m_mainBoardSelectedBoardID;
    }
    void setMainBoardSelectedBoardID(std::optional<base::Uuid> id);

    /// Emitted after a setting has changed, but for the selected board: that is a note for the next
    /// start.
    base::Signal<>& didChange() { return m_didChange; }

private:
    UserDefaults& m_defaults;
    Appearance m_appearance;
    int m_fontSize;
    BoardSpacing m_boardSpacing;
    int m_defaultReminderMinutes;
    std::optional<base::Uuid> m_mainBoardSelectedBoardID;
    base::Signal<> m_didChange;
};

} // namespace korvex::app
