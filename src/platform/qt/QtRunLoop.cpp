#include "platform/qt/QtRunLoop.h"

#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>

namespace korvex::platform::qt {

namespace {

/// A QTimer counts milliseconds in an int: a longer wait is cut into pieces.
constexpr std::chrono::duration<double> kLongestWait = std::chrono::hours(24);

class QtTimer final : public base::RunLoop::Timer {
public:
    QtTimer(std::chrono::duration<double> delay, std::function<void()> work)
        : m_rest(std::max(delay, std::chrono::duration<double>::zero())), m_work(std::move(work)) {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { proceed(); });
        startPiece();
    }

private:
    void startPiece() {
        const auto piece = std::min(m_rest, kLongestWait);
        m_rest -= piece;
        m_timer.start(std::chrono::ceil<std::chrono::milliseconds>(piece));
    }
    void proceed() {
        if (m_rest.count() > 0) {
            startPiece();
        } else {
            // The work may destroy this timer.
            const auto work = std::move(m_work);
            work();
        }
    }

    QTimer m_timer;
    std::chrono::duration<double> m_rest;
    std::function<void()> m_work;
};

/// Qt has a notifier for each direction.
class QtWatch final : public base::RunLoop::Watch {
public:
    QtWatch(int descriptor, base::RunLoop::Interest interest, std::function<void()> work)
        : m_reading(descriptor, QSocketNotifier::Read),
          m_writing(descriptor, QSocketNotifier::Write),
          m_work(std::move(work)) {
        for (auto* const notifier : {&m_reading, &m_writing}) {
            QObject::connect(notifier, &QSocketNotifier::activated, notifier, [this] {
                // The work may destroy this watch.
                const auto current = m_work;
                current();
            });
        }
        QtWatch::setInterest(interest);
    }
    void setInterest(base::RunLoop::Interest interest) override {
        using Interest = base::RunLoop::Interest;
        m_reading.setEnabled(interest == Interest::reading || interest == Interest::both);
        m_writing.setEnabled(interest == Interest::writing || interest == Interest::both);
    }

private:
    QSocketNotifier m_reading;
    QSocketNotifier m_writing;
    std::function<void()> m_work;
};

} // namespace

void QtRunLoop::post(std::function<void()> work) {
    QMetaObject::invokeMethod(&m_context, std::move(work), Qt::QueuedConnection);
}

std::unique_ptr<base::RunLoop::Timer> QtRunLoop::callAfter(std::chrono::duration<double> delay,
                                                           std::function<void()> work) {
    return std::make_unique<QtTimer>(delay, std::move(work));
}

std::unique_ptr<base::RunLoop::Watch> QtRunLoop::watch(int descriptor, Interest interest,
                                                       std::function<void()> work) {
    return std::make_unique<QtWatch>(descriptor, interest, std::move(work));
}

} // namespace korvex::platform::qt
