#pragma once

#include "app/Launch.h"

#include <QStringList>

#include <filesystem>
#include <optional>

class QApplication;
class QCommandLineParser;

namespace korvex::desktop {

/// Starts the program without a window; where it runs, nothing happens.
inline constexpr const char* kBackgroundOption = "--background";
/// What such a start asks one that runs for.
inline constexpr const char* kBackgroundAction = "background";
/// The bus starts the program, and says only then what it is wanted for.
inline constexpr const char* kForBusOption = "--for-bus";
inline constexpr const char* kForBusAction = "for-bus";

/// What the program was started with, known before there is an application.
class Arguments {
public:
    Arguments(int count, char* given[]);

    /// The notes are to be shown and nothing else is asked for, of Qt neither.
    bool areClear() const { return m_areClear; }
    /// Gives the help that was asked for, or says what is wrong, in the language that is set up by
    /// now; either ends the program.
    void answer(const QApplication& application);

    const std::optional<std::filesystem::path>& dataDirectory() const { return m_directory; }
    /// What the program was started for, with the leave that it was given to take the keyboard.
    const app::Launch& launch() const { return m_launch; }
    bool isBackground() const { return m_launch.action == kBackgroundAction; }
    bool isForBus() const { return m_launch.action == kForBusAction; }
    /// Set to show the gallery instead of the notes: how that is to look. In development builds.
    const std::optional<QStringList>& gallery() const { return m_gallery; }

private:
    void take(const QCommandLineParser& parser);

    std::optional<std::filesystem::path> m_directory;
    app::Launch m_launch;
    std::optional<QStringList> m_gallery;
    bool m_areClear = false;
};

} // namespace korvex::desktop
