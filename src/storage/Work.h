#pragma once

#include "base/Error.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <utility>

namespace korvex::storage {

/// What long work is at, as its user is told.
enum class Stage {
    reading,
    checking,
    writing,
    verifying, ///< what was written is read back from the disk and compared
    replacing, ///< the store's contents; not to be cancelled any more
};

struct Progress {
    Stage stage = Stage::reading;
    /// Of this stage, from 0 to 1.
    double fraction = 0;

    bool operator==(const Progress&) const = default;
};

/// The slowest disk takes less to put a backup away, or a mark. What has not advanced for longer
/// waits for a place that does not answer, and may do so for ever.
constexpr std::chrono::minutes kLongestSilence{3};
/// Of what was cancelled: what it waits for then nobody needs any more.
constexpr std::chrono::seconds kLongestSilenceAfterCancel{10};

/// Its user has cancelled: nothing was changed, or no more than the description says.
class Cancelled final : public base::Error {
public:
    explicit Cancelled(const char* description = "Cancelled. Nothing was changed.")
        : Error("Korvex.Storage", 1, description) {}
};

/// What a long function is given by whoever waits for it: where to tell how far it is, and whether
/// to go on. Used by the one thread that works.
class Work {
public:
    /// Called by the thread that works: for each stage at its start and about every percent.
    using Sink = std::function<void(const Progress&)>;

    /// For who waits without looking and never cancels.
    Work() = default;
    explicit Work(Sink sink) : m_sink(std::move(sink)) {}
    /// `isCancelled` is asked often, by the thread that works.
    Work(Sink sink, std::function<bool()> isCancelled)
        : m_sink(std::move(sink)), m_isCancelled(std::move(isCancelled)) {}
    Work(Sink sink, std::stop_token stop)
        : Work(std::move(sink), [stop = std::move(stop)] { return stop.stop_requested(); }) {}

    /// A stage begins that has so many parts, of whatever kind; none where nobody knows. Throws
    /// Cancelled.
    void begin(Stage stage, std::uint64_t parts = 0);
    /// The same of one that is too late to cancel, as is all that follows.
    void beginForGood(Stage stage, std::uint64_t parts = 0);
    /// Costs next to nothing, so it can be called for each row. Throws Cancelled.
    void advance(std::uint64_t parts) {
        m_done += parts;
        if (m_done >= m_next) {
            tell();
        }
    }
    /// Throws Cancelled.
    void checkCancellation() const {
        if (m_isCancelled && m_isCancelled()) {
            throw Cancelled();
        }
    }

private:
    void tell();

    Sink m_sink;
    std::function<bool()> m_isCancelled;
    Stage m_stage = Stage::reading;
    std::uint64_t m_parts = 0;
    std::uint64_t m_done = 0;
    /// How much must be done before it is worth telling again.
    std::uint64_t m_next = 0;
};

} // namespace korvex::storage
