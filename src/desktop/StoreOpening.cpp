#include "desktop/StoreOpening.h"

#include "app/StoreLocation.h"
#include "base/Clock.h"
#include "services/BoardService.h"
#include "storage/StoreAdvice.h"
#include "storage/StoreStart.h"

namespace korvex::desktop {

namespace {

/// What cannot be read now is read anew by the window, which says why.
void readBoard(store::ModelContext& context, const std::optional<base::Uuid>& wanted,
               base::LogSink& log) {
    try {
        services::NoReminders reminders;
        services::NoWidgets widgets;
        const services::BoardService boards(context, reminders, widgets, log);
        if (const auto* const board = boards.launchBoard(wanted)) {
            static_cast<void>(board->entries());
        }
    } catch (const base::Error&) {
    }
}

StoreOpening::Opened open(const std::filesystem::path& file, const StoreOpening::FirstView& view,
                          base::LogSink& log) {
    StoreOpening::Opened opened;
    auto started =
        storage::StoreStart::open({.storeFile = file,
                                   .legacyFile = app::legacyStoreFile(file.parent_path()),
                                   .now = base::SystemClock().now()},
                                  log);
    opened.container = std::move(started.container);
    opened.context = std::move(started.context);
    opened.mergedBoards = std::move(started.mergedBoards);
    opened.notices = std::move(started.notices);
    if (view.isBoard) {
        readBoard(*opened.context, view.board, log);
    }
    return opened;
}

/// The window that stands in for the main one has nothing else to go on with.
StoreOpening::Opened openWithAdvice(const std::filesystem::path& file,
                                    const StoreOpening::FirstView& view, base::LogSink& log) {
    const auto advise = [](const base::Error& error, const std::string& advice) {
        if (!advice.empty()) {
            throw base::Error(error.domain(), error.code(),
                              error.errorDescription() + "\n\n" + advice);
        }
    };
    try {
        return open(file, view, log);
    } catch (const store::StoreError& error) {
        advise(error, storage::adviceOn(error.which(), file));
        throw;
    } catch (const storage::SharedStoreError& error) {
        advise(error, storage::adviceOn(error.which(), file));
        throw;
    }
}

} // namespace

StoreOpening::StoreOpening(std::filesystem::path file, FirstView view, base::LogSink& log)
    // Where no thread can be had, `take` does it as well.
    : m_opened(std::async(
          std::launch::async | std::launch::deferred,
          [file = std::move(file), view, &log] { return openWithAdvice(file, view, log); })) {}

} // namespace korvex::desktop
