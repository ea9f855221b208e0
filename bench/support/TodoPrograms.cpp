#include "support/TodoPrograms.h"

#include "support/BenchStore.h"

#include <fstream>

namespace korvex::bench {

KorvexProgram::KorvexProgram(std::size_t count) {
    makeStore(m_scratch / "Primary.store", titles(count));
}

ChildProcess::Result KorvexProgram::run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {KORVEX_PROGRAM, "--data-dir", dataDirectory()});
    return runToEnd(arguments);
}

TaskProgram::TaskProgram(std::size_t count) {
    std::ofstream(m_scratch / "taskrc") << "confirmation=off\n";
    const auto file = m_scratch / "tasks.json";
    {
        std::ofstream tasks(file);
        tasks << "[";
        const char* separator = "\n";
        for (const auto& title : titles(count)) {
            tasks << separator << R"({"status": "pending", "description": ")" << title << R"("})";
            separator = ",\n";
        }
        tasks << "\n]\n";
    }
    run({"import", file.string()});
    // The first command after an import cleans up; the later ones have nothing to clean.
    run({"list"});
}

Environment TaskProgram::environment() const {
    return {{"TASKDATA", m_scratch.path().string()}, {"TASKRC", (m_scratch / "taskrc").string()}};
}

ChildProcess::Result TaskProgram::run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "task");
    return runToEnd(arguments, environment());
}

} // namespace korvex::bench
