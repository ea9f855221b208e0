#include "app/SettingsWriter.h"

namespace korvex::app {

SettingsWriter::SettingsWriter(FileUserDefaults& defaults, base::RunLoop& runLoop)
    : m_defaults(defaults) {
    defaults.setSchedule([this, &runLoop](std::chrono::duration<double> delay) {
        m_timer = runLoop.callAfter(delay, [this] { m_defaults.writeLeft(); });
    });
    m_defaults.writeLeft();
}

SettingsWriter::~SettingsWriter() {
    m_defaults.setSchedule(nullptr);
}

} // namespace korvex::app
