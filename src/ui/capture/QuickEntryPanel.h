#pragma once

#include "app/QuickEntryRequest.h"
#include "app/QuickEntryState.h"
#include "base/Signal.h"
#include "ui/capture/PanelRoom.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/FolderLook.h"
#include "ui/workspace/Workspace.h"

#include <QTimer>
#include <QWidget>

#include <system_error>
#include <vector>

class QMimeData;

namespace korvex::ui {

class CaptureForm;

/// Quick Entry as a person sees it: a small window over all others, on the screen with the pointer.
/// Saving and Escape put it away. One with nothing in it also goes when another window is gone to;
/// one with something stays, so that words and files can be fetched from there. Main thread.
class QuickEntryPanel final : public QWidget {
    Q_OBJECT

public:
    /// All of it outlives the panel.
    QuickEntryPanel(app::QuickEntryState& state, const Workspace& workspace, const Theme& theme);
    ~QuickEntryPanel() override;

    /// Shows the panel over everything, with the draft that was left in it.
    void open(const app::QuickEntryRequest& request);
    /// The part of the screen that it stands on; `open` takes the screen with the pointer.
    void placeOn(const QRect& screen) { m_room.placeOn(screen); }
    /// Whether what is typed goes into it, or did until a moment ago.
    bool hasKeyboard() const;
    /// Hides it, and keeps the draft. Where that cannot be kept it says so once, and stays.
    /// One that waits for files only stops waiting.
    void putAway();
    /// Whether the program may end as far as what is in it goes: the draft is kept and no file is
    /// being read, or the user, who is asked here, was told in the panel that it cannot be.
    bool mayEnd();
    /// Gives the draft up, after asking where there is something to lose.
    void discard();

Q_SIGNALS:
    /// It is painted, and takes keys by now.
    void ready();
    void hidden();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void makeForm();
    void addShortcuts();
    template <typename Action>
    void addShortcut(const QKeySequence& keys, Action&& action);
    void take(const app::QuickEntryRequest& request);
    void follow();
    void save();
    void setType(model::EntryType type);
    void chooseBoard();
    void editSchedule();
    void chooseFiles();
    void attachOffered(const QMimeData& offered);
    /// A second press closes what the first one has opened.
    bool closesPopoverOf(const QWidget& opener);
    void sayNotKept(std::error_code error);
    void hideNow();
    /// Whether a window of its own has the keyboard, such as that of a file dialog.
    bool asksSomething() const;
    void tellIfReady();

    app::QuickEntryState& m_state;
    const Workspace& m_workspace;
    const Theme& m_theme;
    PanelRoom m_room;
    FolderLook m_look;
    /// The folder where files were chosen last.
    QString m_folder;
    CaptureForm* m_form = nullptr;
    base::Uuid m_revision;
    bool m_wasTold = false;
    bool m_isPainted = false;
    /// Runs while it is not yet sure that another window has the keyboard.
    QTimer m_leaving;
    std::vector<base::Subscription> m_subscriptions;
};

} // namespace korvex::ui
