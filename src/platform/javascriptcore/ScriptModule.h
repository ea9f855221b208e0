#pragma once

#include "base/Log.h"
#include "richtext/code/ScriptEngine.h"

#include <filesystem>
#include <memory>

namespace korvex::platform::javascriptcore {

/// The script engine and the code highlighter that runs in it. They lie in a module of their own,
/// which is loaded when one of them is first asked for: a program that shows no code never maps the
/// engine's 32 MB. What it hands out may be used on any thread and outlive it.
class ScriptModule {
public:
    /// `log` must outlive what is handed out; it is told once when the module cannot be loaded.
    ScriptModule(std::filesystem::path file, base::LogSink& log);

    /// Where the module of the running program lies: beside it, or where an installation puts it.
    static std::filesystem::path defaultFile();

    richtext::ScriptEngineFactory engineFactory() const;
    richtext::ResourceLookup resources() const;

private:
    class Library;
    std::shared_ptr<Library> m_library;
};

} // namespace korvex::platform::javascriptcore
