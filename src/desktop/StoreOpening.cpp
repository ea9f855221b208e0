#include "desktop/StoreOpening.h"

#include "app/StoreLocation.h"
#include "base/Clock.h"
#include "services/BoardService.h"
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

StoreOpening::Opened open(const std::filesystem::path& file, const std::optional<base::Uuid>& board,
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
    readBoard(*opened.context, board, log);
    return opened;
}

} // namespace

StoreOpening::StoreOpening(std::filesystem::path file, std::optional<base::Uuid> board,
                           base::LogSink& log, When when)
    // Where no thread can be had, `take` does it as well.
    : m_opened(std::async(
          when == When::now ? std::launch::async | std::launch::deferred : std::launch::deferred,
          [file = std::move(file), board, &log] { return open(file, board, log); })) {}

} // namespace korvex::desktop
