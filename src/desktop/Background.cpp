#include "desktop/Background.h"

#include <QApplication>

#include <algorithm>

namespace korvex::desktop {

using WhenClosed = app::AppPreferences::WhenClosed;

Background::Background(ui::MainWindow& window, const app::AppPreferences& preferences,
                       const app::QuickEntrySetup* setup)
    : m_preferences(preferences), m_setup(setup) {
    QApplication::setQuitOnLastWindowClosed(false);
    connect(qApp, &QGuiApplication::lastWindowClosed, this, &Background::windowClosed);
    connect(&window, &ui::MainWindow::quitAccepted, this, [] { QApplication::exit(); });
}

bool Background::mayEnd() const {
    return !isReachable() || m_preferences.whenClosed() == WhenClosed::ends;
}

void Background::windowClosed() {
    const auto windows = QApplication::topLevelWidgets();
    const auto isSeen = std::any_of(windows.begin(), windows.end(), [](const QWidget* each) {
        return each->isVisible() && each->windowType() != Qt::ToolTip;
    });
    if (!isSeen && mayEnd()) {
        QApplication::exit();
    }
}

} // namespace korvex::desktop
