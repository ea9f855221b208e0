#pragma once

#include <functional>
#include <list>
#include <memory>
#include <utility>

namespace korvex::base {

/// Ends an observation when it is destroyed. May outlive the signal.
class Subscription {
public:
    Subscription() = default;
    explicit Subscription(std::function<void()> end) : m_end(std::move(end)) {}
    ~Subscription() { cancel(); }
    Subscription(Subscription&& other) noexcept : m_end(std::exchange(other.m_end, nullptr)) {}
    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            cancel();
            m_end = std::exchange(other.m_end, nullptr);
        }
        return *this;
    }

    void cancel() {
        if (auto end = std::exchange(m_end, nullptr)) {
            end();
        }
    }

private:
    std::function<void()> m_end;
};

/// A list of observers. One thread; an observer may subscribe, cancel, or destroy the signal while
/// it is being called.
template <typename... Arguments>
class Signal {
public:
    using Observer = std::function<void(Arguments...)>;

    [[nodiscard]] Subscription connect(Observer observer) {
        m_observers->push_back(std::make_shared<Observer>(std::move(observer)));
        std::weak_ptr<List> list = m_observers;
        std::weak_ptr<Observer> mine = m_observers->back();
        return Subscription([list, mine] {
            if (const auto observers = list.lock()) {
                observers->remove_if([&](const auto& each) { return each == mine.lock(); });
            }
        });
    }

    void emit(Arguments... arguments) const {
        // A copy, so that the list may change underneath; weak, so that who has cancelled is not
        // called any more.
        std::list<std::weak_ptr<Observer>> snapshot(m_observers->begin(), m_observers->end());
        for (const auto& each : snapshot) {
            if (const auto observer = each.lock()) {
                (*observer)(arguments...);
            }
        }
    }

private:
    using List = std::list<std::shared_ptr<Observer>>;
    std::shared_ptr<List> m_observers = std::make_shared<List>();
};

} // namespace korvex::base
