#include "platform/systemd/SdEventRunLoop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <systemd/sd-event.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace korvex::platform::systemd {

namespace {

using Seconds = std::chrono::duration<double>;

/// Longer than any program runs, and short enough to be counted in microseconds.
constexpr Seconds kLongestWait = std::chrono::hours(24 * 365 * 100);
/// sd-event puts timers together that lie within this; its own default is a quarter of a second.
constexpr std::uint64_t kAccuracy = 1000;

std::uint64_t microseconds(Seconds duration) {
    const auto bounded = std::clamp(duration, Seconds::zero(), kLongestWait);
    return static_cast<std::uint64_t>(
        std::chrono::ceil<std::chrono::microseconds>(bounded).count());
}

int require(int result) {
    if (result < 0) {
        throw std::system_error(-result, std::generic_category(), "sd-event");
    }
    return result;
}

std::uint32_t epollEvents(base::RunLoop::Interest interest) {
    switch (interest) {
    case base::RunLoop::Interest::nothing:
        break;
    case base::RunLoop::Interest::reading:
        return EPOLLIN;
    case base::RunLoop::Interest::writing:
        return EPOLLOUT;
    case base::RunLoop::Interest::both:
        return EPOLLIN | EPOLLOUT;
    }
    return 0;
}

struct EndSource {
    void operator()(sd_event_source* source) const { sd_event_source_disable_unref(source); }
};
using Source = std::unique_ptr<sd_event_source, EndSource>;

} // namespace

class SdEventRunLoop::EventTimer final : public Timer {
public:
    EventTimer(SdEventRunLoop& loop, Seconds delay, std::function<void()> work)
        : m_loop(loop), m_work(std::move(work)) {
        // Not counted from the moment that sd-event remembers: that may be long ago by now.
        const auto due = microseconds(loop.elapsed()) + microseconds(delay);
        sd_event_source* source = nullptr;
        require(sd_event_add_time(loop.m_event.get(), &source, CLOCK_MONOTONIC, due, kAccuracy,
                                  &EventTimer::fire, this));
        m_source.reset(source);
    }

private:
    static int fire(sd_event_source*, std::uint64_t, void* self) {
        auto& timer = *static_cast<EventTimer*>(self);
        // The work may destroy the timer.
        const auto work = std::move(timer.m_work);
        timer.m_loop.carryOut(work);
        return 0;
    }

    SdEventRunLoop& m_loop;
    std::function<void()> m_work;
    Source m_source;
};

class SdEventRunLoop::EventWatch final : public Watch {
public:
    EventWatch(SdEventRunLoop& loop, int descriptor, Interest interest, std::function<void()> work)
        : m_loop(loop), m_work(std::move(work)) {
        sd_event_source* source = nullptr;
        require(sd_event_add_io(loop.m_event.get(), &source, descriptor, epollEvents(interest),
                                &EventWatch::notice, this));
        m_source.reset(source);
        EventWatch::setInterest(interest);
    }
    void setInterest(Interest interest) override {
        // What is watched for nothing would still be told that the other end has hung up.
        require(sd_event_source_set_enabled(
            m_source.get(), interest == Interest::nothing ? SD_EVENT_OFF : SD_EVENT_ON));
        if (interest != Interest::nothing) {
            require(sd_event_source_set_io_events(m_source.get(), epollEvents(interest)));
        }
    }

private:
    static int notice(sd_event_source*, int, std::uint32_t, void* self) {
        auto& watch = *static_cast<EventWatch*>(self);
        // The work may destroy the watch.
        const auto work = watch.m_work;
        watch.m_loop.carryOut(work);
        return 0;
    }

    SdEventRunLoop& m_loop;
    std::function<void()> m_work;
    Source m_source;
};

void SdEventRunLoop::Unreference::operator()(sd_event* event) const {
    sd_event_unref(event);
}

SdEventRunLoop::SdEventRunLoop() : m_wakeUp(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    sd_event* event = nullptr;
    require(sd_event_new(&event));
    m_event.reset(event);
    if (!m_wakeUp.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    m_posts = watch(m_wakeUp.get(), Interest::reading, [this] { carryOutPosted(); });
}

SdEventRunLoop::~SdEventRunLoop() = default;

void SdEventRunLoop::post(std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    m_posted.push_back(std::move(work));
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(m_wakeUp.get(), &one, sizeof one);
}

void SdEventRunLoop::carryOutPosted() {
    std::vector<std::function<void()>> posted;
    {
        const std::lock_guard lock(m_mutex);
        std::uint64_t count = 0;
        [[maybe_unused]] const auto read = ::read(m_wakeUp.get(), &count, sizeof count);
        posted.swap(m_posted);
    }
    for (const auto& work : posted) {
        carryOut(work);
    }
}

std::unique_ptr<base::RunLoop::Timer> SdEventRunLoop::callAfter(Seconds delay,
                                                                std::function<void()> work) {
    return std::make_unique<EventTimer>(*this, delay, std::move(work));
}

std::unique_ptr<base::RunLoop::Watch> SdEventRunLoop::watch(int descriptor, Interest interest,
                                                            std::function<void()> work) {
    return std::make_unique<EventWatch>(*this, descriptor, interest, std::move(work));
}

void SdEventRunLoop::run() {
    m_isEnding = false;
    while (!m_isEnding) {
        runOnce(kLongestWait);
    }
}

bool SdEventRunLoop::runUntil(const std::function<bool()>& condition, Seconds limit) {
    const auto end = elapsed() + limit;
    while (!condition()) {
        const auto rest = end - elapsed();
        if (rest <= Seconds::zero()) {
            return false;
        }
        runOnce(rest);
    }
    return true;
}

void SdEventRunLoop::runOnce(Seconds limit) {
    require(sd_event_run(m_event.get(), microseconds(limit)));
    if (m_thrown) {
        std::rethrow_exception(std::exchange(m_thrown, nullptr));
    }
}

void SdEventRunLoop::carryOut(const std::function<void()>& work) noexcept {
    try {
        work();
    } catch (...) {
        // Not through sd-event, which is written in C. The first one tells why the others came.
        if (!m_thrown) {
            m_thrown = std::current_exception();
        }
    }
}

} // namespace korvex::platform::systemd
