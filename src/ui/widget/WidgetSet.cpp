#include "ui/widget/WidgetSet.h"

#include "ui/widget/WidgetScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <utility>

namespace korvex::ui {

WidgetSet::WidgetSet(app::WidgetFile file, const WidgetSurroundings& surroundings,
                     base::LogSink& log)
    : m_file(std::move(file)), m_surroundings(surroundings), m_sink(log), m_log(log, "Widgets") {
    const auto watch = [this](QScreen* screen) {
        connect(screen, &QScreen::availableGeometryChanged, this, &WidgetSet::followScreens);
    };
    for (auto* const screen : QGuiApplication::screens()) {
        watch(screen);
    }
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this, watch](QScreen* screen) {
        watch(screen);
        followScreens();
    });
    // Only then is it gone.
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &WidgetSet::followScreens,
            Qt::QueuedConnection);
}

WidgetSet::~WidgetSet() = default;

bool WidgetSet::showRemembered() {
    for (const auto& remembered : m_file.read(m_sink)) {
        make(remembered);
    }
    for (const auto& window : m_windows) {
        show(*window);
    }
    return !m_windows.empty();
}

void WidgetSet::open(const std::optional<base::Uuid>& board) {
    std::vector<WidgetWindow*> meant;
    for (const auto& window : m_windows) {
        if (board ? window->isOf(*board) : !window->isShown()) {
            meant.push_back(window.get());
        }
    }
    // The first comes last, and keeps the keyboard.
    for (auto window = meant.rbegin(); window != meant.rend(); ++window) {
        show(**window);
        (*window)->bringForward();
    }
    if (meant.empty()) {
        add(board);
    }
}

void WidgetSet::bringForward() {
    if (!m_windows.empty()) {
        m_windows.front()->bringForward();
    }
}

void WidgetSet::add(const std::optional<base::Uuid>& board, WidgetWindow* asked) {
    if (m_windows.size() < app::WidgetFile::kMostWidgets) {
        asked = &make({.board = board});
        write();
    } else {
        m_log.warning("There are as many widgets as there can be");
        asked = asked ? asked : m_windows.front().get();
        asked->refuse(tr("There are as many widgets as there can be."));
    }
    show(*asked);
    asked->bringForward();
}

WidgetWindow& WidgetSet::make(const app::RememberedWidget& remembered) {
    auto& window =
        *m_windows.emplace_back(std::make_unique<WidgetWindow>(remembered, m_surroundings));
    connect(&window, &WidgetWindow::placed, this, &WidgetSet::write);
    connect(&window, &WidgetWindow::addRequested, this,
            [this, &window] { add(std::nullopt, &window); });
    if (m_windows.size() == 1) {
        connect(&window, &WidgetWindow::firstPainted, this, &WidgetSet::firstPainted);
    }
    // Not within the menu that asks for it.
    connect(
        &window, &WidgetWindow::removeRequested, this, [this, &window] { remove(window); },
        Qt::QueuedConnection);
    connect(
        &window, &WidgetWindow::closeAllRequested, this,
        [this] {
            for (const auto& each : m_windows) {
                each->close();
            }
        },
        Qt::QueuedConnection);
    connect(
        &window, &WidgetWindow::closed, this,
        [this] {
            if (!hasShown()) {
                Q_EMIT emptied();
            }
        },
        Qt::QueuedConnection);
    return window;
}

void WidgetSet::show(WidgetWindow& window) {
    if (window.isVisible()) {
        return; // it stands where the user has put it
    }
    std::vector<QRect> others;
    for (const auto& each : m_windows) {
        if (each->isVisible()) {
            others.push_back(each->geometry());
        }
    }
    window.showAt(WidgetScreens::next(WidgetWindow::firstSize(m_surroundings.theme), others,
                                      m_surroundings.theme.space(Space::wide)));
}

void WidgetSet::remove(WidgetWindow& window) {
    std::erase_if(m_windows, [&](const auto& each) { return each.get() == &window; });
    write();
    if (!hasShown()) {
        Q_EMIT emptied();
    }
}

bool WidgetSet::hasShown() const {
    return std::any_of(m_windows.begin(), m_windows.end(),
                       [](const auto& window) { return window->isVisible(); });
}

void WidgetSet::followScreens() {
    for (const auto& window : m_windows) {
        window->followScreens();
    }
}

void WidgetSet::save() {
    for (const auto& window : m_windows) {
        window->settle();
    }
    write();
}

void WidgetSet::write() {
    std::vector<app::RememberedWidget> widgets;
    for (const auto& window : m_windows) {
        widgets.push_back(window->remembered());
    }
    if (const auto error = m_file.write(widgets)) {
        m_log.warning("The widgets could not be remembered: " + error.message());
    }
}

std::vector<WidgetWindow*> WidgetSet::windows() const {
    std::vector<WidgetWindow*> result;
    for (const auto& window : m_windows) {
        result.push_back(window.get());
    }
    return result;
}

} // namespace korvex::ui
