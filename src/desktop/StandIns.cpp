#include "desktop/StandIns.h"

#include "desktop/Launches.h"
#include "storage/SharedStoreError.h"
#include "ui/kit/words/Refusal.h"
#include "ui/windows/StorePreparingWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <cstdlib>

namespace korvex::desktop {

namespace {

/// How long nobody minds that there is no window yet, and how often is looked after that.
constexpr std::chrono::seconds kUnnoticedStart{1};
constexpr std::chrono::milliseconds kLook{50};

} // namespace

std::optional<StoreOpening::Opened>
StandIns::takeStore(StoreOpening opening, const std::function<StoreOpening()>& again) const {
    for (;;) {
        waitFor(opening);
        std::optional<StoreOpening::Opened> store;
        auto subject = m_surroundings.storeFile;
        auto which = ui::StoreErrorWindow::Which::own;
        const auto refused = ui::refusal([&] {
            try {
                store = opening.take();
            } catch (const storage::LegacyStoreError& error) {
                subject = error.file();
                which = error.isGone() ? ui::StoreErrorWindow::Which::own
                                       : ui::StoreErrorWindow::Which::legacy;
                // The window shows the file.
                throw base::Error(error.domain(), error.code(), error.reason());
            }
        });
        if (!refused || showError(*refused, subject, which) == AfterError::quit) {
            return store;
        }
        opening = again();
    }
}

StandIns::AfterError StandIns::showError(const QString& message, const std::filesystem::path& file,
                                         ui::StoreErrorWindow::Which which) const {
    ui::StoreErrorWindow window(m_surroundings.program, message, file, m_surroundings.theme, which);
    auto next = AfterError::quit;
    QObject::connect(&window, &ui::StoreErrorWindow::retryRequested, &window, [&] {
        next = AfterError::tryAgain;
        window.close();
    });
    const auto raising = bringForwardWhenAsked(window);
    window.show();
    QApplication::exec();
    return next;
}

/// Nothing is to be seen meanwhile unless it takes long.
void StandIns::waitFor(const StoreOpening& opening) const {
    if (opening.isDoneWithin(kUnnoticedStart)) {
        return;
    }
    ui::StorePreparingWindow window(m_surroundings.program, m_surroundings.theme);
    QObject::connect(&window, &ui::StorePreparingWindow::left, &window, [this] {
        m_surroundings.instance.close();
        // The thread that opens the store cannot be stopped, and need not be.
        std::_Exit(EXIT_SUCCESS);
    });
    const auto raising = bringForwardWhenAsked(window);
    QEventLoop waiting;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &waiting, [&] {
        if (opening.isDoneWithin({})) {
            waiting.quit();
        }
    });
    look.start(kLook);
    window.show();
    waiting.exec();
}

base::Subscription StandIns::bringForwardWhenAsked(QWidget& window) const {
    return m_surroundings.instance.launched().connect(
        [&window](const app::Launch& launch) { bringForward(window, launch); });
}

} // namespace korvex::desktop
