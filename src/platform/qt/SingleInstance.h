#pragma once

#include "base/Signal.h"

#include <QLocalServer>
#include <QObject>

#include <filesystem>

namespace korvex::platform::qt {

/// One desktop app per data folder: the first one listens, a later one asks it to come forward and
/// ends. Main thread.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(const std::filesystem::path& dataDirectory);

    /// Tells a running app of this folder to show itself; false when there is none.
    bool raiseRunning() const;
    /// From now on later starts are told of this one.
    void listen();

    base::Signal<>& raiseRequested() { return m_raiseRequested; }

private:
    QString m_name;
    QLocalServer m_server;
    base::Signal<> m_raiseRequested;
};

} // namespace korvex::platform::qt
