#pragma once

#include <filesystem>

namespace korvex::bench {

/// A folder for a benchmark's stores, removed at the end. It lies in the working folder and not
/// where temporary files go, which may be memory: what is measured must reach a disk.
class Scratch {
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const char* name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

} // namespace korvex::bench
