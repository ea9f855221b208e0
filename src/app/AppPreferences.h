#pragma once

#include "app/UserDefaults.h"
#include "base/Log.h"
#include "base/Signal.h"
#include "base/Uuid.h"

#include <optional>

namespace korvex::app {

/// The user's settings as the windows need them now: malformed values read as their defaults, a set
/// one is written at once. One a program; main thread; the defaults must outlive it.
class AppPreferences {
public:
    enum class Appearance { system, light, dark };
    enum class BoardSpacing { compact, comfortable };

    AppPreferences(UserDefaults& defaults, base::LogSink& log);

    Appearance appearance() const { return m_appearance; }
    void setAppearance(Appearance appearance);
    /// Points; one of 10 to 16, 18, 20, 22, 24.
    int fontSize() const { return m_fontSize; }
    void setFontSize(int fontSize);
    BoardSpacing boardSpacing() const { return m_boardSpacing; }
    void setBoardSpacing(BoardSpacing spacing);
    /// Minutes after midnight, 0 to 1439.
    int defaultReminderMinutes() const { return m_defaultReminderMinutes; }
    void setDefaultReminderMinutes(int minutes);
    /// The board last shown in the main window; may be gone by now.
    std::optional<base::Uuid> mainBoardSelectedBoardID() const { return m_mainBoardSelectedBoardID; }
    void setMainBoardSelectedBoardID(std::optional<base::Uuid> id);

    base::Signal<>& didChange() { return m_didChange; }

private:
    UserDefaults& m_defaults;
    Appearance m_appearance = Appearance::system;
    int m_fontSize = 13;
    BoardSpacing m_boardSpacing = BoardSpacing::compact;
    int m_defaultReminderMinutes = 540;
    std::optional<base::Uuid> m_mainBoardSelectedBoardID;
    base::Signal<> m_didChange;
};

} // namespace korvex::app
