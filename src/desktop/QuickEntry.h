#pragma once

#include "app/HotkeyBackend.h"
#include "app/Launch.h"
#include "app/QuickEntryDraft.h"
#include "app/QuickEntryState.h"
#include "base/Signal.h"
#include "ui/capture/QuickEntryPanel.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/Workspace.h"

#include <memory>

namespace korvex::desktop {

/// Quick Entry of the desktop app, by whatever way it is asked for; made when that is first done.
/// Main thread; all that it is given outlives it.
class QuickEntry final {
public:
    QuickEntry(const ui::Workspace& workspace, const ui::Theme& theme)
        : m_workspace(workspace), m_theme(theme), m_draftFile(workspace.drafts.folders()) {}

    /// Opens the panel over everything, with what the launch asks for; puts it away where it has
    /// the keyboard already and nothing else is asked for. The press is that of the shortcut, if it
    /// was one.
    void open(const app::Launch& launch, const app::HotkeyPress& press = {});
    /// Writes the draft, as before the program ends.
    void keepDraft();
    /// Whether the user, who ends the program, loses nothing by it, or was told so: once it is said
    /// in the panel, and the program goes on.
    bool mayEnd() { return !m_panel || m_panel->mayEnd(); }

    /// The panel has the keyboard.
    base::Signal<>& ready() { return m_ready; }
    /// The panel has gone.
    base::Signal<>& hidden() { return m_hidden; }

private:
    void make();

    const ui::Workspace& m_workspace;
    const ui::Theme& m_theme;
    app::QuickEntryDraftFile m_draftFile;
    /// Null until it is first asked for, both.
    std::unique_ptr<app::QuickEntryState> m_state;
    std::unique_ptr<ui::QuickEntryPanel> m_panel;
    base::Signal<> m_ready;
    base::Signal<> m_hidden;
};

} // namespace korvex::desktop
