#pragma once

#include "storage/BackupFile.h"

#include <exception>
#include <utility>

namespace korvex::storage {

/// A function that does the same, and whose every failure can be told: what else than an Error it
/// throws, as where there is no memory, becomes one.
template <typename Function>
auto withErrorsOnly(Function work) {
    return [work = std::move(work)](auto&&... arguments) mutable {
        try {
            return work(std::forward<decltype(arguments)>(arguments)...);
        } catch (const base::Error&) {
            throw;
        } catch (const std::exception& error) {
            throw FileError(error.what());
        }
    };
}

} // namespace korvex::storage
