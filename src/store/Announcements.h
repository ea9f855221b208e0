#pragma once

#include "base/Signal.h"
#include "store/ChangeSet.h"

#include <deque>
#include <functional>
#include <utility>

namespace korvex::store {

/// What the observers of a context are still to be told, in order: during a step they wait for its
/// end. Main thread; the signals must outlive this.
class Announcements {
public:
    using Signal = base::Signal<const ChangeSet&>;

    /// `didSave` is emitted for saves only and before `didChange`, which is emitted for everything.
    Announcements(const Signal& didSave, const Signal& didChange)
        : m_didSave(didSave), m_didChange(didChange) {}

    enum class Cause { save, other };
    void add(ChangeSet changes, Cause cause);
    /// What is done once every change is told; it must not throw.
    void add(std::function<void()> work) { m_work.push_back(std::move(work)); }
    /// What is added meanwhile is told too, by the call that is running already.
    void deliver() noexcept;

private:
    struct Announcement {
        ChangeSet changes;
        Cause cause;
    };

    const Signal& m_didSave;
    const Signal& m_didChange;
    std::deque<Announcement> m_waiting;
    std::deque<std::function<void()>> m_work;
    bool m_isDelivering = false;
};

} // namespace korvex::store
