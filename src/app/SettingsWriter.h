#pragma once

#include "app/FileUserDefaults.h"
#include "base/RunLoop.h"

namespace korvex::app {

/// Gives settings the time to be written: what may wait after a pause, and what could not be
/// written again and again. Main thread; both outlive it. At its end all that is left is tried.
class SettingsWriter {
public:
    SettingsWriter(FileUserDefaults& defaults, base::RunLoop& runLoop) : m_defaults(defaults) {
        m_defaults.setRunLoop(&runLoop);
    }
    ~SettingsWriter() { m_defaults.setRunLoop(nullptr); }
    SettingsWriter(const SettingsWriter&) = delete;
    SettingsWriter& operator=(const SettingsWriter&) = delete;

private:
    FileUserDefaults& m_defaults;
};

} // namespace korvex::app
