#include "desktop/Reminders.h"

#include "platform/bus/AgentProtocol.h"
#include "platform/system/ProgramFile.h"

#include <QGuiApplication>

namespace korvex::desktop {

Reminders::Reminders(platform::bus::Bus& bus, base::RunLoop& runLoop,
                     const std::filesystem::path& storeFile, Store store, base::LogSink& log)
    // Widgets hear the change signal, which every save sends already.
    : m_widgets([](std::string_view) {}, log) {
    if (store == Store::another) {
        return;
    }
    m_agent.emplace(
        bus, runLoop, storeFile,
        [] { return platform::system::startBeside(platform::bus::kAgentProgram); }, log);
    m_agent->requestReconcile();
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
            [this](Qt::ApplicationState state) {
                if (state == Qt::ApplicationActive) {
                    m_agent->requestReconcile();
                }
            });
}

void Reminders::follow(store::ModelContext& context) {
    if (m_agent) {
        m_changes = context.didChange().connect([this](const store::ChangeSet& changes) {
            if (changes.origin == store::ChangeSet::Origin::elsewhere) {
                m_agent->requestReconcile();
            }
        });
    }
}

} // namespace korvex::desktop
