#pragma once

#include "base/Error.h"

#include <string>

namespace korvex::cli {

/// How the program ends; scripts rely on these numbers.
enum class ExitStatus {
    done = 0,
    refused = 1,    ///< nothing was changed
    wrongUsage = 2, ///< the command could not be understood
    unusable = 3,   ///< the store could not be used, or the results could not be written
};

/// What the command line itself refuses, before a service is asked.
class CommandLineError final : public base::Error {
public:
    CommandLineError(ExitStatus status, std::string description)
        : Error("Korvex.CommandLine", static_cast<int>(status), std::move(description)),
          m_status(status) {}

    ExitStatus status() const noexcept { return m_status; }

private:
    ExitStatus m_status;
};

inline CommandLineError refusal(std::string description) {
    return {ExitStatus::refused, std::move(description)};
}
inline CommandLineError wrongUsage(std::string description) {
    return {ExitStatus::wrongUsage, std::move(description)};
}

} // namespace korvex::cli
