#pragma once

#include <string>
#include <string_view>

namespace korvex::base {

enum class LogLevel { debug, info, notice, warning, error };

/// Where log lines go: the journal, standard error, a test's list. Must not throw.
class LogSink {
public:
    virtual ~LogSink() = default;
    /// Whether lines of this level are kept: who makes many of them can save the work.
    virtual bool accepts(LogLevel) const { return true; }
    virtual void write(LogLevel level, std::string_view category, std::string_view message) = 0;
};

/// Standard error, for where there is no journal: "korvex [category] message". Only lines of
/// `minimum` and above.
class StandardErrorLog final : public LogSink {
public:
    explicit StandardErrorLog(LogLevel minimum) : m_minimum(minimum) {}
    bool accepts(LogLevel level) const override { return level >= m_minimum; }
    void write(LogLevel level, std::string_view category, std::string_view message) override;

private:
    LogLevel m_minimum;
};

/// The log of one category. Cheap to copy; the sink must outlive it.
class Logger {
public:
    /// `category` must be a literal or live as long as the logger.
    Logger(LogSink& sink, std::string_view category) : m_sink(&sink), m_category(category) {}

    bool accepts(LogLevel level) const { return m_sink->accepts(level); }

    void info(std::string_view message) const {
        m_sink->write(LogLevel::info, m_category, message);
    }
    void warning(std::string_view message) const {
        m_sink->write(LogLevel::warning, m_category, message);
    }
    void error(std::string_view message) const {
        m_sink->write(LogLevel::error, m_category, message);
    }

private:
    LogSink* m_sink;
    std::string_view m_category;
};

} // namespace korvex::base
