#pragma once

#include "desktop/StoreOpening.h"
#include "platform/system/SingleInstance.h"
#include "ui/kit/theme/Theme.h"
#include "ui/windows/StoreErrorWindow.h"

#include <QString>

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

namespace korvex::desktop {

/// The windows that stand in for the main one: while the store takes long to open, and where it
/// cannot be opened. A later start brings forward whichever of them is there; what
/// it was started for waits for the main window (`EarlyLaunches`). Main thread.
class StandIns {
public:
    /// All of it outlives them.
    struct Surroundings {
        const std::filesystem::path& storeFile;
        /// What the windows are called.
        QString program;
        const ui::Theme& theme;
        platform::system::SingleInstance& instance;
    };
    explicit StandIns(Surroundings surroundings) : m_surroundings(std::move(surroundings)) {}

    /// Absent when the user gives up. Who does not want to wait for the opening ends the program at
    /// once: it can be killed at every step.
    std::optional<StoreOpening::Opened> takeStore(StoreOpening opening,
                                                  const std::function<StoreOpening()>& again) const;

    enum class AfterError { quit, tryAgain };
    /// Until the window is closed.
    AfterError showError(const QString& message) const {
        return showError(message, m_surroundings.storeFile, ui::StoreErrorWindow::Which::own);
    }

private:
    AfterError showError(const QString& message, const std::filesystem::path& file,
                         ui::StoreErrorWindow::Which which) const;
    void waitFor(const StoreOpening& opening) const;
    base::Subscription bringForwardWhenAsked(QWidget& window) const;

    Surroundings m_surroundings;
};

} // namespace korvex::desktop
