#include "ui/windows/CaptureScenes.h"

#include "ui/kit/overlays/Popover.h"

#include <QTest>

#include <array>
#include <utility>
#include <vector>

namespace korvex::tests {

namespace {

/// The second is longer than a chip may be.
constexpr std::array kFiles{"confirmation.pdf", "Map of the old town, with all stops.png"};

} // namespace

CaptureScenes::CaptureScenes(const ui::Workspace& workspace, const ui::Theme& theme)
    : m_workspace(workspace),
      m_draftFile(workspace.drafts.folders()),
      m_state({.context = workspace.context,
               .preferences = workspace.preferences,
               .reminders = workspace.reminders,
               .widgets = workspace.widgets,
               .draftFile = m_draftFile,
               .runLoop = workspace.runLoop,
               .clock = workspace.clock,
               .log = workspace.log,
               .inBackground = [](const auto& work) { work(); },
               .isUsersOwn = false}),
      m_panel(m_state, workspace, theme) {}

void CaptureScenes::open(QSize screen) {
    m_panel.open({.type = model::EntryType::todo});
    m_panel.placeOn({QPoint(), screen});
    static_cast<void>(QTest::qWaitForWindowActive(&m_panel));
}

void CaptureScenes::write(model::EntryType type, std::string content) {
    m_state.setEntryType(type);
    m_state.setContent(std::move(content));
}

void CaptureScenes::schedule() {
    constexpr double kDay = 24 * 3600;
    const auto now = m_workspace.now();
    m_state.setSchedule({.dueDate = now + kDay, .reminderDate = now + kDay / 2});
}

void CaptureScenes::attach() {
    std::vector<model::EntryAttachment> files;
    for (const auto* const name : kFiles) {
        files.push_back(
            {.id = base::Uuid::random(), .filename = name, .data = base::Bytes(120'000)});
    }
    m_state.attach(std::move(files));
}

void CaptureScenes::close() {
    m_state.reset();
    m_panel.putAway();
}

} // namespace korvex::tests
