#pragma once

#include <QWidget>

#include <filesystem>

namespace korvex::ui {

/// Stands in for the main window when the store could not be opened: says why and what to do.
/// Nothing has been changed.
class StoreErrorWindow final : public QWidget {
    Q_OBJECT

public:
    StoreErrorWindow(const QString& message, const std::filesystem::path& storeFile);
};

} // namespace korvex::ui
