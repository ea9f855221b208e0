#pragma once

#include "ui/workspace/Workspace.h"

namespace korvex::tests {

/// What somebody has in the window after some weeks: four boards and an archived one, todos of
/// every kind of schedule, attachments, a formatted text, what is completed. Days are reckoned from
/// now.
void fillWindow(const ui::Workspace& workspace);
/// The same after some years: 10,000 more entries on the Inbox, and more boards than have room.
void fillWindowFull(const ui::Workspace& workspace);

} // namespace korvex::tests
