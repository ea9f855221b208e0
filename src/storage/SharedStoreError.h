#pragma once

#include "base/Error.h"

#include <filesystem>
#include <string>
#include <utility>

namespace korvex::storage {

/// Why the store of all programs is not ready for one of them.
enum class SharedStoreErrorCase {
    appGroupUnavailable,    ///< nobody knows a folder for it
    notPrepared,            ///< no program that may prepare it has been started yet
    incompleteStore,        ///< it was there and is gone
    cloudMigrationRequired, ///< it must be upgraded first, which this program may not
};
std::string descriptionOf(SharedStoreErrorCase which);
std::string domainOf(SharedStoreErrorCase which);
using SharedStoreError = base::TypedError<SharedStoreErrorCase>;

/// The store of an older Korvex cannot be carried over: it is as it was.
class LegacyStoreError final : public base::Error {
public:
    /// `help`: what else can be done than to move it away, where anything can.
    LegacyStoreError(const base::Error& reason, std::filesystem::path file,
                     const std::string& help = {})
        : Error(reason.domain(), reason.code(),
                reason.errorDescription() + " It is the store of an older Korvex, " +
                    file.string() + ". Move it away to start anew." +
                    (help.empty() ? "" : "\n" + help)),
          m_reason(reason.errorDescription() + (help.empty() ? "" : "\n\n" + help)),
          m_file(std::move(file)) {}
    /// The file is not there: what there is instead `reason` says, and what can be done about it.
    static LegacyStoreError ofGone(const base::Error& reason, std::filesystem::path file) {
        return {reason, std::move(file), File::gone};
    }

    /// Why, and what helps, for who shows the file beside it.
    const std::string& reason() const noexcept { return m_reason; }
    const std::filesystem::path& file() const noexcept { return m_file; }
    /// Whether it is not there, and so cannot be moved away.
    bool isGone() const noexcept { return m_isGone; }

private:
    enum class File { gone };
    LegacyStoreError(const base::Error& reason, std::filesystem::path file, File)
        : Error(reason),
          m_reason(reason.errorDescription()),
          m_file(std::move(file)),
          m_isGone(true) {}

    std::string m_reason;
    std::filesystem::path m_file;
    bool m_isGone = false;
};

} // namespace korvex::storage
