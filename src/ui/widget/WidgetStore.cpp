#include "ui/widget/WidgetStore.h"

#include "base/Error.h"
#include "services/EntryService.h"
#include "storage/SharedModelContainer.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"

#include <sys/stat.h>

#include <string_view>
#include <vector>

namespace korvex::ui {

namespace {

constexpr const char* kAskedFor =
    "Korvex is upgrading or repairing the store. The todos come back when it is done.";

/// Keeps what is logged until it is known whether that is news: who tries again and again would say
/// the same each time.
class HeldLog final : public base::LogSink {
public:
    void write(base::LogLevel level, std::string_view category, std::string_view message) override {
        m_lines.push_back({level, std::string(category), std::string(message)});
    }
    void release(base::LogSink& log) const {
        for (const auto& line : m_lines) {
            log.write(line.level, line.category, line.message);
        }
    }

private:
    struct Line {
        base::LogLevel level;
        std::string category;
        std::string message;
    };
    std::vector<Line> m_lines;
};

/// Whoever waits for other programs in front of a widget would take a long wait for a fault.
std::unique_ptr<store::ModelContainer> openExisting(const WidgetStore::Surroundings& surroundings,
                                                    base::LogSink& log) {
    return storage::SharedModelContainer::make({.storeURL = surroundings.file,
                                                .existingStoreOnly = true,
                                                .lockTimeout = surroundings.patience},
                                               log);
}

} // namespace

WidgetStore::Open::Open(std::unique_ptr<store::ModelContainer> opened,
                        const Surroundings& surroundings, services::WidgetReloading& widgets)
    : container(std::move(opened)),
      context(*container),
      boards(context, surroundings.reconciling, widgets, surroundings.log),
      scheduleClock(surroundings.clock, surroundings.runLoop, surroundings.timeZone,
                    surroundings.log) {
    scheduleClock.start(*container);
    // Of its own saves the clock knows; nearly all others change the todos of a widget.
    m_changes = context.didChange().connect([this](const store::ChangeSet& changes) {
        if (changes.origin == store::ChangeSet::Origin::elsewhere) {
            scheduleClock.scheduleRefresh();
        }
    });
}

WidgetStore::WidgetStore(Surroundings surroundings)
    : m_surroundings(std::move(surroundings)),
      // The widgets of this program: those of another one hear the change signal.
      m_widgets([this](std::string_view) { static_cast<void>(refreshes()); }, m_surroundings.log),
      m_intent(m_surroundings.reconciling, m_widgets, m_surroundings.log) {
    tryToOpen();
}

WidgetStore::~WidgetStore() = default;

WidgetStore::FileID WidgetStore::fileThere() const {
    struct stat status {};
    if (::stat(m_surroundings.file.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return std::pair(status.st_dev, status.st_ino);
}

void WidgetStore::follow() {
    if (m_open) {
        if (!isAskedFor() && fileThere() == m_openedFile && refreshes()) {
            return;
        }
        close();
    }
    tryToOpen();
}

bool WidgetStore::refreshes() {
    if (!m_open) {
        return false;
    }
    try {
        m_open->context.refresh();
        return true;
    } catch (const store::StoreError& error) {
        // Who waits for another program sees it all a moment later.
        return error.which() == store::StoreErrorCase::busy;
    }
}

void WidgetStore::close() {
    m_willClose.emit();
    m_open.reset();
    m_reason.clear();
}

bool WidgetStore::isAskedFor() const {
    return store::SoleRequest::stands(store::StoreFile(m_surroundings.file).lockFile());
}

bool WidgetStore::takeReason(std::string reason) {
    return std::exchange(m_reason, std::move(reason)) != m_reason;
}

void WidgetStore::tryToOpen() {
    if (isAskedFor()) {
        if (takeReason(kAskedFor)) {
            base::Logger(m_surroundings.log, "Widgets").info(m_reason);
            m_didChange.emit();
        }
        return;
    }
    HeldLog held;
    const auto file = fileThere();
    try {
        m_open =
            std::make_unique<Open>(openExisting(m_surroundings, held), m_surroundings, m_widgets);
        m_openedFile = file;
        m_reason.clear();
    } catch (const base::Error& error) {
        if (!takeReason(error.errorDescription())) {
            return;
        }
        base::Logger(m_surroundings.log, "Widgets").warning(m_reason);
    }
    held.release(m_surroundings.log);
    m_didChange.emit();
}

void WidgetStore::complete(const model::Entry& entry) {
    const auto open = [this] { return openExisting(m_surroundings, m_surroundings.log); };
    m_intent.perform(entry.id().text(),
                     {.openExisting = open, .announceChange = m_surroundings.announceChange},
                     m_surroundings.clock.now(), m_surroundings.reminders);
}

void WidgetStore::restore(const model::Entry& entry, std::optional<std::int64_t> position) {
    // With records of its own: to find the place it reads the whole board, which is let go again.
    store::ModelContext context(*m_open->container);
    if (auto* const found = context.find<model::Entry>(entry.id())) {
        services::EntryService(context, m_surroundings.reconciling, m_widgets, m_surroundings.log)
            .restoreTodo(*found, m_surroundings.clock.now(), position);
        m_surroundings.announceChange();
    }
    static_cast<void>(refreshes());
}

} // namespace korvex::ui
