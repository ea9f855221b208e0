#pragma once

#include <QObject>

#include <functional>

namespace korvex::desktop {

/// Ends the program once nothing of it is to be seen any more, unless something keeps it ready in
/// the background. Made when the windows are: those that stand in for them end by themselves.
/// Main thread.
class LastWindow final : public QObject {
    Q_OBJECT

public:
    LastWindow();
    ~LastWindow() override;

    /// Asked each time that the last window has gone; nobody is there to ask at first, and the
    /// program ends.
    void setStays(std::function<bool()> stays) { m_stays = std::move(stays); }
    /// A window was only hidden, of which Qt tells nobody. What is looked at is what is seen soon:
    /// another one may be about to open.
    void look();

private:
    std::function<bool()> m_stays;
};

} // namespace korvex::desktop
