#pragma once

#include "base/Log.h"

#include <filesystem>

namespace korvex::platform::systemd {

/// The systemd journal: `journalctl -t korvex`, one category with `KORVEX_CATEGORY=store`. Where no
/// journal runs, the lines go to `fallback`, which must outlive this. Any thread.
class JournalLog final : public base::LogSink {
public:
    static constexpr const char* kJournalSocket = "/run/systemd/journal/socket";

    /// Whether there is a journal is decided here, by its socket.
    explicit JournalLog(base::LogSink& fallback,
                        const std::filesystem::path& socket = kJournalSocket);

    bool accepts(base::LogLevel level) const override;
    void write(base::LogLevel level, std::string_view category, std::string_view message) override;

private:
    base::LogSink& m_fallback;
    bool m_hasJournal;
};

} // namespace korvex::platform::systemd
