#pragma once

#include "ui/settings/SettingsWindow.h"

#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/settings/SettingsLabel.h"
#include "ui/windows/NavigationFixture.h"

#include <QComboBox>
#include <QDeadlineTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>

#include <chrono>
#include <functional>
#include <stdexcept>

namespace korvex::tests {

/// The main window and, over it, that of the settings, with what is asked of its panes.
class SettingsFixture : public NavigationFixture {
protected:
    enum Pane { general, appearance, quick, notifications, backups };

    void openSettings(Pane pane) {
        if (!window) {
            open();
        }
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QTest::keyClick(window.get(), Qt::Key_Comma, Qt::ControlModifier);
        for (auto* const each : QApplication::topLevelWidgets()) {
            if (auto* const found = qobject_cast<SettingsWindow*>(each)) {
                settings = found;
            }
        }
        ASSERT_TRUE(settings);
        EXPECT_TRUE(QTest::qWaitForWindowActive(settings));
        settings->showPane(pane);
        QApplication::processEvents();
    }

    /// The one in sight of this accessible name, or with these words on it.
    template <typename Kind>
    Kind& control(const char* name) {
        for (auto* const each : settings->findChildren<Kind*>()) {
            const auto* const button = qobject_cast<const QAbstractButton*>(each);
            if (each->isVisible() && (each->accessibleName() == QString::fromUtf8(name) ||
                                      (button && button->text() == QString::fromUtf8(name)))) {
                return *each;
            }
        }
        throw std::logic_error(name);
    }
    void press(const char* button) { control<QPushButton>(button).click(); }
    /// Chooses as the user does, by keys.
    void choose(const char* choice, const char* text) {
        auto& box = control<QComboBox>(choice);
        const auto row = box.findText(QString::fromUtf8(text));
        ASSERT_GE(row, 0) << text;
        box.setFocus();
        QTest::keyClick(&box, Qt::Key_Home);
        for (int i = 0; i < row; ++i) {
            QTest::keyClick(&box, Qt::Key_Down);
        }
    }
    /// All words of the pane, a line each.
    std::string words() {
        QStringList lines;
        for (const auto* const label : settings->findChildren<SettingsLabel*>()) {
            if (label->isVisible()) {
                lines.append(label->text());
            }
        }
        return plain(lines.join(QLatin1Char('\n')));
    }
    /// As it is typed: without places where a line breaks or must not, and with plain spaces.
    static std::string plain(QString text) {
        text.remove(QChar(0x200B)).remove(QChar(0x2060));
        return toUtf8(
            text.replace(QChar(0x202F), QLatin1Char(' ')).replace(QChar::Nbsp, QLatin1Char(' ')));
    }
    /// The one for files that the button opens, after a look at where it is to begin.
    QFileDialog& openDialog(const char* button) {
        press(button);
        workUntil([this] { return settings->findChild<QFileDialog*>() != nullptr; });
        return *settings->findChild<QFileDialog*>();
    }
    /// Answers the dialog that the button opens, and whether a file may be replaced with yes.
    /// Something else happens between the dialog's look at the file and ours.
    void answer(
        const char* button, const std::filesystem::path& file,
        const std::function<void()>& before = [] {}) {
        auto& dialog = openDialog(button);
        before();
        // Not through the dialog's own checks: what it asks would wait for an answer.
        dialog.findChild<QLineEdit*>()->setText(toQString(file.native()));
        Q_EMIT dialog.filesSelected(dialog.fileMode() == QFileDialog::Directory
                                        ? QStringList(toQString(file.native()))
                                        : dialog.selectedFiles());
        dialog.close();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        settings->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(settings));
    }
    /// Lets the background and the windows work until it is so, whichever of them comes first.
    template <typename Condition>
    void workUntil(Condition&& isSo) {
        const QDeadlineTimer deadline(std::chrono::seconds(20));
        while (!isSo()) {
            if (deadline.hasExpired()) {
                throw std::runtime_error("waited in vain at:\n" + words());
            }
            runLoop.runPosted();
            QTest::qWait(1);
        }
    }
    void workUntilSaid(const char* text) {
        workUntil([&] { return words().find(text) != std::string::npos; });
    }
    /// The one over this window.
    static ConfirmationSheet* sheetOver(const QWidget& over) {
        for (auto* const sheet : over.findChildren<ConfirmationSheet*>()) {
            if (sheet->isVisible()) {
                return sheet;
            }
        }
        return nullptr;
    }
    std::string question() {
        const auto* const sheet = sheetOver(*settings);
        return sheet ? plain(sheet->accessibleName()) : std::string();
    }

    SettingsWindow* settings = nullptr;
};

} // namespace korvex::tests
