#include "ui/pictures/PicturedWindow.h"

#include "model/SchemaVersions.h"
#include "services/EntryOrder.h"
#include "storage/StoreMarkers.h"
#include "ui/widget/NotedDesktop.h"
#include "ui/widget/WidgetWindow.h"
#include "ui/windows/WindowContents.h"

#include <QApplication>
#include <QFile>
#include <QMenu>
#include <QPainter>
#include <QTest>

#include <algorithm>
#include <stdexcept>
#include <utility>

#ifdef KORVEX_GALLERY
#include "ui/gallery/GalleryWindow.h"
#endif

namespace korvex::tests {

namespace {

constexpr int kForColors = 5'000; // milliseconds
constexpr int kBetweenTries = 50;
constexpr int kMostTries = 100;

} // namespace

PicturedWindow::PicturedWindow(const Variant& variant)
    : m_container(store::ModelContainer::open(model::currentSchema(),
                                              {.file = m_folder / "Primary.store"}, m_log)) {
    QApplication::setLayoutDirection(variant.direction);
    m_preferences.setAppearance(variant.appearance);
    m_preferences.setFontSize(variant.fontSize);
    m_theme.setSystem({.contrast = variant.contrast, .motion = ui::Theme::SystemMotion::still});
    m_owner = std::make_unique<ui::WorkspaceOwner>(
        ui::WorkspaceOwner::Surroundings{.container = *m_container,
                                         .preferences = m_preferences,
                                         .defaults = m_defaults,
                                         .clock = m_clock,
                                         .runLoop = m_runLoop,
                                         .threads = m_threads,
                                         .log = m_log,
                                         .reminders = &m_reminders,
                                         .quickEntry = &m_quickEntry.setup,
                                         .timeZone = base::TimeZone::utc,
                                         .makeEngine = m_script.engineFactory(),
                                         .resources = m_script.resources(),
                                         .copies = m_folder / "copies"});
    const auto& workspace = m_owner->workspace();
    switch (variant.fill) {
    case Variant::Fill::empty:
        workspace.boards.initializeDefaultBoards(m_clock.now());
        break;
    case Variant::Fill::usual:
        fillWindow(workspace);
        break;
    case Variant::Fill::full:
        fillWindowFull(workspace);
        break;
    }
    if (variant.fill != Variant::Fill::empty) {
        backUp(workspace);
    }
    bool areColorsKnown = variant.fill == Variant::Fill::empty;
    const auto arrivals = workspace.code.arrived().connect([&] { areColorsKnown = true; });
    m_window = std::make_unique<ui::MainWindow>(workspace, m_theme);
    m_window->resize(variant.size);
    m_window->show();
    static_cast<void>(QTest::qWaitForWindowActive(m_window.get()));
    static_cast<void>(QTest::qWaitFor([&] { return areColorsKnown; }, kForColors));
    m_scenes = std::make_unique<WindowScenes>(*m_window, workspace, m_theme, &m_quickEntry.system);
}

/// Yesterday and today, into a folder of the user.
void PicturedWindow::backUp(const ui::Workspace& workspace) {
    qputenv("HOME", QByteArray::fromStdString((m_folder / "home").native()));
    const auto folder = m_folder / "home" / "Backups";
    std::filesystem::create_directories(folder);
    auto& backups = workspace.automaticBackups;
    backups.chooseFolder(folder);
    static_cast<void>(QTest::qWaitFor([&] { return !backups.isChoosing(); }));
    m_preferences.setAutomaticBackupEnabled(true);
    for (const auto hours : {-20, 20}) {
        m_clock.advance(hours * 3600.0);
        backups.backUpNow();
        static_cast<void>(QTest::qWaitFor([&] { return !backups.isRunning(); }));
    }
}

/// Some of Qt's own motion heeds no wish for stillness, and tells nobody that it goes on.
QPixmap PicturedWindow::stillWindow() {
    auto seen = m_scenes->shown().grab();
    for (int tries = 0; tries < kMostTries; ++tries) {
        QTest::qWait(kBetweenTries); // also what follows an event by a timer
        const auto before = std::exchange(seen, m_scenes->shown().grab());
        if (m_scenes->isSettled() && seen.toImage() == before.toImage()) {
            break;
        }
    }
    return seen;
}

QImage PicturedWindow::picture() {
    const auto window = stillWindow();
    auto& shown = m_scenes->shown();
    auto* const menu = QApplication::activePopupWidget();
    if (!menu) {
        return window.toImage();
    }
    const QRect place(menu->pos() - shown.pos(), menu->size());
    const auto all = place | shown.rect();
    QPixmap both(all.size() * window.devicePixelRatio());
    both.setDevicePixelRatio(window.devicePixelRatio());
    both.fill(Qt::gray);
    QPainter painter(&both);
    painter.drawPixmap(-all.topLeft(), window);
    painter.drawPixmap(place.topLeft() - all.topLeft(), menu->grab());
    painter.end();
    return both.toImage();
}

QImage PicturedWindow::widget() {
    const auto& workspace = m_owner->workspace();
    const auto& file = m_container->configuration().file;
    storage::storeMarkers::set(file, storage::storeMarkers::kPrepared);
    services::NoReminders reminders;
    schedule::NoNotifications notifications;
    ui::WidgetStore store({.file = file,
                           .clock = m_clock,
                           .runLoop = m_runLoop,
                           .reconciling = reminders,
                           .reminders = notifications,
                           .announceChange = [] {},
                           .log = m_log,
                           .timeZone = base::TimeZone::utc});
    NotedDesktop desktop;
    ui::WidgetWindow window({}, {.store = store,
                                 .theme = m_theme,
                                 .dates = workspace.dates,
                                 .folding = workspace.folding,
                                 .runLoop = m_runLoop,
                                 .desktop = desktop});
    window.showAt({QPoint(), ui::WidgetWindow::firstSize(m_theme)});
    QTest::qWait(kBetweenTries);
    return window.grab().toImage();
}

QImage PicturedWindow::gallery() {
#ifdef KORVEX_GALLERY
    ui::GalleryWindow gallery(m_preferences, m_theme);
    gallery.resize(gallery.wholeSize());
    gallery.show();
    QApplication::processEvents();
    return gallery.grab().toImage();
#else
    return {};
#endif
}

void PicturedWindow::writeNote(const QString& file) const {
    const auto entries = services::activeEntries(*m_owner->workspace().boards.inboxBoard());
    const auto note = std::find_if(entries.begin(), entries.end(),
                                   [](const model::Entry* each) { return !each->isTodo(); });
    const auto& data = (*note)->richTextData();
    QFile written(file);
    if (!written.open(QIODevice::WriteOnly) ||
        written.write(reinterpret_cast<const char*>(data->data()),
                      static_cast<qint64>(data->size())) < 0) {
        throw std::runtime_error(file.toStdString() + " cannot be written");
    }
}

} // namespace korvex::tests
