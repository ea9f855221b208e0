#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <filesystem>
#include <optional>

class QApplication;

namespace korvex::desktop {

/// What the program was started with, known before there is an application.
class Arguments {
public:
    Arguments(int count, char* given[]);

    /// The notes are to be shown and nothing else is asked for, of Qt neither.
    bool areClear() const { return m_areClear; }
    /// Gives the help that was asked for, or says what is wrong; either ends the program.
    void answer(const QApplication& application);

    std::optional<std::filesystem::path> dataDirectory() const;
    /// Set to show the gallery instead of the notes: how that is to look. In development builds.
    std::optional<QStringList> gallery() const;

private:
    QCommandLineParser m_parser;
    QCommandLineOption m_help;
    QCommandLineOption m_directory;
    QCommandLineOption m_gallery;
    bool m_areClear = false;
};

} // namespace korvex::desktop
