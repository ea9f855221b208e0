#pragma once

#include "app/QuickEntryDraft.h"
#include "app/QuickEntryState.h"
#include "ui/capture/QuickEntryPanel.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/Workspace.h"

#include <string>

namespace korvex::tests {

/// Quick Entry over the store of a main window, as scenes of it need it.
class CaptureScenes {
public:
    CaptureScenes(const ui::Workspace& workspace, const ui::Theme& theme);

    ui::QuickEntryPanel& panel() { return m_panel; }
    /// Opens the panel with nothing in it, on a screen of this size.
    void open(QSize screen);
    /// What is typed first.
    void write(model::EntryType type, std::string content);
    void schedule();
    void attach();
    void setHeading() { m_state.setHeading(richtext::HeadingLevel::level1); }
    /// Hides the panel, and gives up what is in it.
    void close();

private:
    const ui::Workspace& m_workspace;
    app::QuickEntryDraftFile m_draftFile;
    app::QuickEntryState m_state;
    ui::QuickEntryPanel m_panel;
};

} // namespace korvex::tests
