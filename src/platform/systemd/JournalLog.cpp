#include "platform/systemd/JournalLog.h"

// The lines say where they come from by their category, not by file and line.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>

#include <sys/uio.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <string>

namespace korvex::platform::systemd {

namespace {

int priority(base::LogLevel level) {
    switch (level) {
    case base::LogLevel::debug:
        return LOG_DEBUG;
    case base::LogLevel::info:
        return LOG_INFO;
    case base::LogLevel::notice:
        return LOG_NOTICE;
    case base::LogLevel::warning:
        return LOG_WARNING;
    case base::LogLevel::error:
        return LOG_ERR;
    }
    return LOG_INFO;
}

/// sd-journal reads the bytes only, but has them in a type that could write.
iovec field(std::string& text) {
    return {.iov_base = text.data(), .iov_len = text.size()};
}

} // namespace

JournalLog::JournalLog(base::LogSink& fallback, const std::filesystem::path& socket)
    : m_fallback(fallback), m_hasJournal(::access(socket.c_str(), W_OK) == 0) {}

bool JournalLog::accepts(base::LogLevel level) const {
    return m_hasJournal || m_fallback.accepts(level);
}

void JournalLog::write(base::LogLevel level, std::string_view category, std::string_view message) {
    if (m_hasJournal) {
        std::string identifier = "SYSLOG_IDENTIFIER=korvex";
        auto priorityField = "PRIORITY=" + std::to_string(priority(level));
        auto categoryField = std::string("KORVEX_CATEGORY=").append(category);
        auto messageField = std::string("MESSAGE=").append(message);
        const std::array fields{field(messageField), field(priorityField), field(identifier),
                                field(categoryField)};
        if (sd_journal_sendv(fields.data(), static_cast<int>(fields.size())) == 0) {
            return;
        }
    }
    m_fallback.write(level, category, message);
}

} // namespace korvex::platform::systemd
