#pragma once

#include "storage/BackupFile.h"

#include <exception>
#include <utility>

namespace korvex::ui {

/// The work of a background task, so that whatever it fails for can be told: what else a file may
/// be refused for, such as that there is no memory for it, becomes an Error too.
template <typename Function>
auto withErrorsOnly(Function work) {
    return [work = std::move(work)](storage::Work& mine) mutable {
        try {
            return work(mine);
        } catch (const base::Error&) {
            throw;
        } catch (const std::exception& error) {
            throw storage::FileError(error.what());
        }
    };
}

} // namespace korvex::ui
