#pragma once

#include "app/UserDefaults.h"

#include <QString>

#include <filesystem>
#include <functional>

class QWidget;

namespace korvex::ui {

/// Where backups are written and read: asks the user, beginning where that was last. `receive` is
/// called with what was chosen, while the asking widget lives. Main thread; the settings outlive
/// it.
class BackupPlaces {
public:
    explicit BackupPlaces(app::UserDefaults& defaults) : m_defaults(defaults) {}

    using Receive = std::function<void(const std::filesystem::path&)>;
    /// `name` is proposed. What is typed without the extension of a backup gets it, unless there
    /// is a file of one of the two names: nobody was asked about any other than that one.
    void fileToWrite(QWidget& asker, const QString& name, Receive receive) const;
    void fileToRead(QWidget& asker, Receive receive) const;
    void folder(QWidget& asker, const QString& title, Receive receive) const;

private:
    QString lastFolder() const;
    void remember(const std::filesystem::path& folder) const;

    app::UserDefaults& m_defaults;
};

} // namespace korvex::ui
