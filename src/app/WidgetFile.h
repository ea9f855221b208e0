#pragma once

#include "base/Log.h"
#include "base/Uuid.h"

#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

namespace korvex::app {

/// What is remembered of a widget from one start to the next.
struct RememberedWidget {
    /// Absent: the Inbox.
    std::optional<base::Uuid> board = std::nullopt;
    /// Where it stands, in the desktop's pixels; with a width of 0 it has not stood anywhere yet.
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    /// Where the desktop knows how, it stands below all other windows.
    bool isBelow = true;

    bool hasPlace() const { return width > 0; }
    bool operator==(const RememberedWidget&) const = default;
};

/// The widgets of a store, in a small file (docs/formats/widgets.md). One program at a time;
/// nothing is created before the first write.
class WidgetFile {
public:
    /// A desktop has no room for more; what a program does not write it does not read either.
    static constexpr std::size_t kMostWidgets = 32;
    static constexpr int kFarthest = 100'000;
    static constexpr int kLargest = 10'000;

    explicit WidgetFile(std::filesystem::path file) : m_file(std::move(file)) {}

    /// The file for the widgets of a store, in the folder for the state of programs.
    static std::filesystem::path in(const std::filesystem::path& stateFolder,
                                    const std::filesystem::path& storeFile);

    /// None where there is no file. A damaged one is kept under another name, and logged; of a
    /// sound one, what is out of bounds is left aside.
    std::vector<RememberedWidget> read(base::LogSink& log) const;
    [[nodiscard]] std::error_code write(const std::vector<RememberedWidget>& widgets) const;

private:
    void setAside(base::LogSink& log) const;

    std::filesystem::path m_file;
};

} // namespace korvex::app
