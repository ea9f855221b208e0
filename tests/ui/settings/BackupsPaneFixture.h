#pragma once

#include "ui/settings/SettingsFixture.h"

#include "storage/BackupHistory.h"
#include "ui/settings/BackupOperations.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace korvex::ui {

/// The settings' pane of backups.
class BackupsPaneFixture : public tests::SettingsFixture {
protected:
    std::filesystem::path backup() const { return folder / "mine.korvexbackup"; }
    std::vector<std::string> boardNames() {
        std::vector<std::string> names;
        for (const auto* const board : own.boards.boards()) {
            names.push_back(board->name());
        }
        return names;
    }
    void exportAll() {
        answer("Export…", backup());
        workUntilSaid("Backup exported.");
    }
    /// Up to the question.
    void chooseImport() {
        answer("Import…", backup());
        workUntil([&] { return !question().empty(); });
    }
    void import() {
        chooseImport();
        clock.advance(60);
        press("Import");
        workUntilSaid("Backup restored. A recovery copy of the previous data is kept locally.");
    }
    /// To its end: it is listed a little before that.
    void backUpNow() {
        press("Back Up Now");
        EXPECT_FALSE(control<QPushButton>("Back Up Now").isEnabled());
        workUntilSaid("Last backup\nMar 10, 2025, 8:00 AM");
        workUntilSaid("Checked: it is whole.");
    }
    /// With a first backup in it.
    void chooseAndBackUp(const std::filesystem::path& chosen) {
        std::filesystem::create_directory(chosen);
        add({"mine"});
        openSettings(backups);
        answer("Choose…", chosen);
        workUntilSaid(chosen.filename().c_str());
        backUpNow();
    }
    /// From another window.
    void comeBack() {
        // A look that is under way tells of what it saw before, and none begins beside it.
        EXPECT_TRUE(threads.waitUntilEnded(std::chrono::seconds(20)));
        runLoop.runPosted();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        settings->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(settings));
        QApplication::processEvents();
    }
    const SettingsLabel& label(const char* text) {
        for (const auto* const each : settings->findChildren<SettingsLabel*>()) {
            if (each->isVisible() && plain(each->text()).find(text) == 0) {
                return *each;
            }
        }
        throw std::logic_error(text);
    }
    bool isInSight(const char* text) { return !label(text).visibleRegion().isEmpty(); }
    /// Where it stands, in pixels from the top of the window.
    int firstLine(const char* text) {
        const auto& words = label(text);
        const auto room = words.contentsRect();
        const auto unused =
            room.height() -
            words.fontMetrics().boundingRect(room, Qt::TextWordWrap, words.text()).height();
        return words.mapTo(settings, room.topLeft()).y() + words.fontMetrics().ascent() +
               (words.alignment().testFlag(Qt::AlignTop) ? 0 : unused / 2);
    }
    void typeIntoNewTodo(const QString& text) {
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        page().startTodo();
        QTest::keyClicks(QApplication::focusWidget(), text);
    }
    /// By another program, in the place of all that is there.
    void restoreElsewhere(base::Instant now) {
        storage::Work whole;
        tests::StoreClient theirs(folder / "Primary.store", log);
        storage::BackupService(theirs.context, theirs.reminders, theirs.widgets, log)
            .restore(storage::createBackup(*theirs.container, now, whole).document, recovery(), now,
                     whole);
    }
    std::filesystem::path recovery() const {
        return folder / "Recovery" / "BeforeRestore.korvexbackup";
    }
    BackupOperations& operations() { return *settings->findChild<BackupOperations*>(); }
    /// With each of its steps.
    template <typename Step>
    base::Subscription eachStep(Step step) {
        const auto connection = QObject::connect(&operations(), &BackupOperations::changed, step);
        return base::Subscription([connection] { QObject::disconnect(connection); });
    }
    void write(const std::string& text, std::uintmax_t size) {
        std::ofstream(backup()) << text;
        std::filesystem::resize_file(backup(), size);
    }
};

} // namespace korvex::ui
