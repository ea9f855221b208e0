#include "agent/ReminderTable.h"

#include "store/Statement.h"
#include "store/StoreError.h"

#include <sqlite3.h>

#include <algorithm>

namespace korvex::agent {

using schedule::PendingReminder;
using schedule::ReminderRequest;
using store::Statement;

namespace {

std::int64_t number(ReminderState state) {
    return static_cast<std::int64_t>(state);
}

/// Of a row that begins with entry, due and body.
ReminderRequest requestOf(const Statement& row) {
    return {.entryID = row.uuid(0), .date = {row.real(1)}, .body = std::string(row.text(2))};
}

ShownNotification shownOf(const Statement& row, int column) {
    return {.id = static_cast<std::uint32_t>(row.integer(column)),
            .daemon = std::string(row.text(column + 1))};
}

void bind(Statement& statement, int first, const ShownNotification& shown) {
    statement.bind(first, std::int64_t{shown.id});
    statement.bind(first + 1, std::string_view(shown.daemon));
}

/// Runs a query to its end; the statement is ready again afterwards, whatever `take` throws.
template <typename Take>
void forEachRow(Statement& statement, Take&& take) {
    struct Reset {
        Statement& statement;
        ~Reset() { statement.reset(); }
    } const reset{statement};
    while (statement.step()) {
        take();
    }
}

} // namespace

struct ReminderTable::Statements {
    explicit Statements(sqlite3* handle) : database(handle) {}

    sqlite3* database;
    Statement begin{database, "BEGIN IMMEDIATE"};
    Statement commit{database, "COMMIT"};
    Statement rollback{database, "ROLLBACK"};
    Statement standing{database, "SELECT entry, due, body, state = 2 FROM Reminder "
                                 "WHERE due > ? AND state != 3 ORDER BY due, entry"};
    // What was shown under the same moment is as good as shown now: it is only remembered.
    Statement put{database,
                  "INSERT INTO Reminder(entry, due, body, state) VALUES(?1, ?2, ?3, 0) "
                  "ON CONFLICT(entry) DO UPDATE SET "
                  "state = CASE WHEN due = excluded.due AND state != 0 THEN 2 ELSE 0 END, "
                  "due = excluded.due, body = excluded.body, notification = NULL, daemon = NULL"};
    Statement known{database, "SELECT 1 FROM Reminder WHERE entry = ? AND due = ?"};
    Statement removePending{database, "DELETE FROM Reminder WHERE entry = ? AND state = 0"};
    Statement withdrawNotification{
        database, "INSERT OR IGNORE INTO Withdrawal SELECT notification, daemon FROM Reminder "
                  "WHERE entry = ? AND state = 1"};
    Statement setWithdrawn{database, "UPDATE Reminder SET state = 3, body = '', "
                                     "notification = NULL, daemon = NULL WHERE entry = ?"};
    Statement due{database, "SELECT entry, due, body FROM Reminder WHERE state = 0 AND due <= ? "
                            "ORDER BY due LIMIT ?"};
    Statement nextDue{database, "SELECT due FROM Reminder WHERE state = 0 AND due > ? "
                                "ORDER BY due LIMIT 1"};
    Statement setPosted{database, "UPDATE Reminder SET state = 1, notification = ?3, daemon = ?4 "
                                  "WHERE entry = ?1 AND due = ?2 AND state = 0"};
    // It was shown, though nobody asks for it any more: asked for again, it is not shown again.
    Statement remember{database, "INSERT OR IGNORE INTO Reminder(entry, due, body, state) "
                                 "VALUES(?, ?, '', 3)"};
    Statement addWithdrawal{database,
                            "INSERT OR IGNORE INTO Withdrawal(notification, daemon) VALUES(?, ?)"};
    Statement removeWithdrawal{database,
                               "DELETE FROM Withdrawal WHERE notification = ? AND daemon = ?"};
    Statement setGone{database,
                      "UPDATE Reminder SET state = 2, body = '', notification = NULL, "
                      "daemon = NULL WHERE notification = ? AND daemon = ? AND state = 1"};
    Statement entryOf{database, "SELECT entry FROM Reminder WHERE notification = ? AND daemon = ? "
                                "AND state = 1"};
    Statement posted{database, "SELECT entry, due, body FROM Reminder WHERE state = 1"};
    Statement withdrawals{database, "SELECT notification, daemon FROM Withdrawal"};
    Statement withdrawPostedOf{
        database, "INSERT OR IGNORE INTO Withdrawal SELECT notification, daemon FROM Reminder "
                  "WHERE state = 1 AND daemon = ?"};
    Statement postAgain{database, "UPDATE Reminder SET state = 0, notification = NULL, "
                                  "daemon = NULL WHERE state = 1"};
    Statement postOthersAgain{database, "UPDATE Reminder SET state = 0, notification = NULL, "
                                        "daemon = NULL WHERE state = 1 AND daemon != ?"};
    Statement forgetOtherDaemons{database, "DELETE FROM Withdrawal WHERE daemon != ?"};
    Statement mark{database, "SELECT moment FROM Mark WHERE name = 'watchedUntil'"};
    Statement setMark{database,
                      "INSERT OR REPLACE INTO Mark(name, moment) VALUES('watchedUntil', ?)"};
    Statement pendingRows{database, "SELECT entry, due, body, state, notification, daemon "
                                    "FROM Reminder WHERE state = 0 ORDER BY due, entry LIMIT ?"};
    Statement otherRows{database, "SELECT entry, due, body, state, notification, daemon "
                                  "FROM Reminder WHERE state != 0 "
                                  "ORDER BY due DESC, entry LIMIT ?"};
    Statement counts{database, "SELECT COALESCE(SUM(state = 0), 0), COUNT(*) FROM Reminder"};
    Statement forgetOldest{database,
                           "DELETE FROM Reminder WHERE state = ?1 AND due < (SELECT due FROM "
                           "Reminder WHERE state = ?1 ORDER BY due DESC LIMIT 1 OFFSET ?2)"};
};

ReminderTable::ReminderTable(const std::filesystem::path& file, base::LogSink& log)
    : m_file(file, log) {
    try {
        prepare();
        changeTogether([] {});
    } catch (const store::StoreError& error) {
        if (!ReminderFile::isDamage(error)) {
            throw;
        }
        recover(error);
    }
}

ReminderTable::~ReminderTable() = default;

ReminderFile::Opened ReminderTable::recover(const store::StoreError& error) {
    m_statements.reset();
    if (store::isDamage(error) && error.which() != store::StoreErrorCase::inputOutput) {
        m_file.beginAnew(error.what());
        prepare();
        return ReminderFile::Opened::anew;
    }
    return openAgain();
}

ReminderFile::Opened ReminderTable::openAgain() {
    auto opened = m_file.openAgain();
    try {
        prepare();
    } catch (const store::StoreError& error) {
        // What cannot be asked for, though the file is whole and says that it is of this form, is
        // missing in it.
        if (error.which() != store::StoreErrorCase::other) {
            throw;
        }
        m_file.beginAnew(error.what());
        opened = ReminderFile::Opened::anew;
        prepare();
    }
    return opened;
}

void ReminderTable::prepare() {
    m_statements = std::make_unique<Statements>(m_file.handle());
}

ReminderTable::Statements& ReminderTable::statements() {
    if (!m_statements) {
        openAgain();
    }
    return *m_statements;
}

std::vector<PendingReminder> ReminderTable::standing(base::Instant after) {
    std::vector<PendingReminder> standing;
    auto& query = statements().standing;
    query.bind(0, after.seconds);
    forEachRow(query, [&] {
        standing.push_back({.request = requestOf(query), .wasShown = query.integer(3) != 0});
    });
    return standing;
}

void ReminderTable::put(const ReminderRequest& request) {
    atOnce([&] {
        withdrawNotification(request.entryID);
        auto& insert = statements().put;
        insert.bind(0, request.entryID);
        insert.bind(1, request.date.seconds);
        insert.bind(2, std::string_view(request.body));
        insert.run();
    });
}

void ReminderTable::putUnlessKnown(const ReminderRequest& request) {
    atOnce([&] {
        auto isKnown = false;
        auto& query = statements().known;
        query.bind(0, request.entryID);
        query.bind(1, request.date.seconds);
        forEachRow(query, [&] { isKnown = true; });
        if (!isKnown) {
            put(request);
        }
    });
}

void ReminderTable::withdraw(const base::Uuid& entry) {
    atOnce([&] {
        withdrawNotification(entry);
        for (auto* const change : {&statements().removePending, &statements().setWithdrawn}) {
            change->bind(0, entry);
            change->run();
        }
    });
}

void ReminderTable::withdrawNotification(const base::Uuid& entry) {
    statements().withdrawNotification.bind(0, entry);
    statements().withdrawNotification.run();
}

std::vector<ReminderRequest> ReminderTable::due(base::Instant now, std::size_t atMost) {
    std::vector<ReminderRequest> requests;
    auto& query = statements().due;
    query.bind(0, now.seconds);
    query.bind(1, static_cast<std::int64_t>(atMost));
    forEachRow(query, [&] { requests.push_back(requestOf(query)); });
    return requests;
}

std::optional<base::Instant> ReminderTable::nextDue(base::Instant now) {
    std::optional<base::Instant> next;
    auto& query = statements().nextDue;
    query.bind(0, now.seconds);
    forEachRow(query, [&] { next = base::Instant{query.real(0)}; });
    return next;
}

void ReminderTable::setPosted(const base::Uuid& entry, base::Instant due,
                              const ShownNotification& shown) {
    atOnce([&] {
        // The daemon gives the number of a notification that it has closed, which nobody has told
        // us of.
        setClosed(shown);
        auto& update = statements().setPosted;
        update.bind(0, entry);
        update.bind(1, due.seconds);
        bind(update, 2, shown);
        update.run();
        if (update.changes() == 0) {
            bind(statements().addWithdrawal, 0, shown);
            statements().addWithdrawal.run();
            auto& remember = statements().remember;
            remember.bind(0, entry);
            remember.bind(1, due.seconds);
            remember.run();
        }
    });
}

void ReminderTable::setClosed(const ShownNotification& shown) {
    atOnce([&] {
        for (auto* const change : {&statements().setGone, &statements().removeWithdrawal}) {
            bind(*change, 0, shown);
            change->run();
        }
    });
}

std::optional<base::Uuid> ReminderTable::entryOf(const ShownNotification& shown) {
    std::optional<base::Uuid> entry;
    auto& query = statements().entryOf;
    bind(query, 0, shown);
    forEachRow(query, [&] { entry = query.uuid(0); });
    return entry;
}

std::vector<ReminderRequest> ReminderTable::posted() {
    std::vector<ReminderRequest> requests;
    auto& query = statements().posted;
    forEachRow(query, [&] { requests.push_back(requestOf(query)); });
    return requests;
}

std::vector<ShownNotification> ReminderTable::withdrawals() {
    std::vector<ShownNotification> result;
    auto& query = statements().withdrawals;
    forEachRow(query, [&] { result.push_back(shownOf(query, 0)); });
    return result;
}

void ReminderTable::postAllAgain(std::string_view daemon) {
    atOnce([&] {
        statements().withdrawPostedOf.bind(0, daemon);
        statements().withdrawPostedOf.run();
        statements().postAgain.run();
        statements().forgetOtherDaemons.bind(0, daemon);
        statements().forgetOtherDaemons.run();
    });
}

void ReminderTable::postOthersAgain(std::string_view daemon) {
    atOnce([&] {
        for (auto* const change :
             {&statements().postOthersAgain, &statements().forgetOtherDaemons}) {
            change->bind(0, daemon);
            change->run();
        }
    });
}

std::optional<base::Instant> ReminderTable::watchedUntil() {
    std::optional<base::Instant> moment;
    auto& query = statements().mark;
    forEachRow(query, [&] { moment = base::Instant{query.real(0)}; });
    return moment;
}

void ReminderTable::setWatchedUntil(base::Instant moment) {
    statements().setMark.bind(0, moment.seconds);
    statements().setMark.run();
}

ReminderTable::Rows ReminderTable::rows(std::size_t atMost) {
    std::size_t pending = 0;
    std::size_t all = 0;
    auto& counts = statements().counts;
    forEachRow(counts, [&] {
        pending = static_cast<std::size_t>(counts.integer(0));
        all = static_cast<std::size_t>(counts.integer(1));
    });
    const auto others = all - pending;
    const auto half = atMost / 2;
    const auto roomOfPending = std::min(pending, atMost - std::min(others, half));
    Rows result;
    const auto read = [&](Statement& query, std::size_t room) {
        query.bind(0, static_cast<std::int64_t>(room));
        forEachRow(query, [&] {
            auto& row = result.read.emplace_back(
                Row{.request = requestOf(query),
                    .state = static_cast<ReminderState>(query.integer(3))});
            if (!query.isAbsent(4)) {
                row.shown = shownOf(query, 4);
            }
        });
    };
    read(statements().pendingRows, roomOfPending);
    read(statements().otherRows, atMost - roomOfPending);
    result.more = all - std::min(all, result.read.size());
    return result;
}

void ReminderTable::changeTogether(const std::function<void()>& changes) {
    atOnce([&] {
        changes();
        forgetOldest();
    });
}

void ReminderTable::forgetOldest() {
    for (const auto state : {ReminderState::gone, ReminderState::withdrawn}) {
        auto& remove = statements().forgetOldest;
        remove.bind(0, number(state));
        remove.bind(1, static_cast<std::int64_t>(kMaximumRemembered) - 1);
        remove.run();
    }
}

void ReminderTable::atOnce(const std::function<void()>& changes) {
    if (m_depth > 0) {
        changes();
        return;
    }
    struct Depth {
        int& depth;
        explicit Depth(int& its) : depth(its) { ++depth; }
        ~Depth() { --depth; }
    } const depth(m_depth);
    auto& mine = statements();
    mine.begin.run();
    try {
        changes();
        mine.commit.run();
    } catch (...) {
        // SQLite itself takes back what a full disk has ended.
        if (sqlite3_get_autocommit(mine.database) == 0) {
            mine.rollback.run();
        }
        throw;
    }
}

} // namespace korvex::agent
