#include "platform/javascriptcore/ScriptModule.h"

#include "platform/javascriptcore/Module.h"

#include <dlfcn.h>

#include <mutex>
#include <string>
#include <system_error>
#include <utility>

namespace korvex::platform::javascriptcore {

class ScriptModule::Library {
public:
    Library(std::filesystem::path file, base::LogSink& log)
        : m_file(std::move(file)), m_log(log, "ScriptModule") {}

    /// Null when it cannot be loaded. Any thread.
    const Module* module() {
        std::call_once(m_once, [this] { load(); });
        return m_module;
    }

private:
    void load() {
        // It is never unloaded: the engine leaves threads and handlers behind.
        auto* const handle = ::dlopen(m_file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
        auto* const entry = handle ? ::dlsym(handle, kModuleEntry) : nullptr;
        if (!entry) {
            const auto* const reason = ::dlerror();
            m_log.warning(reason ? reason : "the module has no entry");
            return;
        }
        m_module = reinterpret_cast<ModuleEntry*>(entry)();
    }

    std::filesystem::path m_file;
    base::Logger m_log;
    std::once_flag m_once;
    const Module* m_module = nullptr;
};

ScriptModule::ScriptModule(std::filesystem::path file, base::LogSink& log)
    : m_library(std::make_shared<Library>(std::move(file), log)) {}

std::filesystem::path ScriptModule::defaultFile() {
    std::error_code failed;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", failed).parent_path();
    auto beside = folder / kModuleFile;
    if (failed || std::filesystem::exists(beside, failed)) {
        return beside;
    }
    return folder.parent_path() / "lib" / "korvex" / kModuleFile;
}

richtext::ScriptEngineFactory ScriptModule::engineFactory() const {
    return [library = m_library](std::stop_token stop) -> std::unique_ptr<richtext::ScriptEngine> {
        const auto* const module = library->module();
        return module ? module->makeEngine(std::move(stop)) : nullptr;
    };
}

richtext::ResourceLookup ScriptModule::resources() const {
    return [library = m_library](std::string_view name,
                                 std::string_view extension) -> std::optional<std::string_view> {
        const auto* const module = library->module();
        return module ? module->resource(name, extension) : std::nullopt;
    };
}

} // namespace korvex::platform::javascriptcore
