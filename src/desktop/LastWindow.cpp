#include "desktop/LastWindow.h"

#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <algorithm>

namespace korvex::desktop {

namespace {

bool isAnythingSeen() {
    const auto windows = QApplication::topLevelWidgets();
    return std::any_of(windows.begin(), windows.end(), [](const QWidget* each) {
        return each->isVisible() && each->testAttribute(Qt::WA_QuitOnClose);
    });
}

} // namespace

LastWindow::LastWindow() {
    QApplication::setQuitOnLastWindowClosed(false);
    connect(qApp, &QGuiApplication::lastWindowClosed, this, &LastWindow::look);
}

LastWindow::~LastWindow() {
    QApplication::setQuitOnLastWindowClosed(true);
}

void LastWindow::look() {
    QTimer::singleShot(0, this, [this] {
        if (!isAnythingSeen() && !(m_stays && m_stays())) {
            QApplication::exit();
        }
    });
}

} // namespace korvex::desktop
