#pragma once

#include "app/FileUserDefaults.h"
#include "base/RunLoop.h"

#include <memory>

namespace korvex::app {

/// Gives settings the time to be written: what may wait after a pause, and what could not be
/// written again and again. Main thread; both outlive it. At its end all that is left is written.
class SettingsWriter {
public:
    SettingsWriter(FileUserDefaults& defaults, base::RunLoop& runLoop);
    ~SettingsWriter();
    SettingsWriter(const SettingsWriter&) = delete;
    SettingsWriter& operator=(const SettingsWriter&) = delete;

private:
    FileUserDefaults& m_defaults;
    std::unique_ptr<base::RunLoop::Timer> m_timer;
};

} // namespace korvex::app
