#pragma once

#include "base/RunLoop.h"
#include "base/Signal.h"
#include "richtext/code/CodeSyntax.h"
#include "richtext/code/ScopeCache.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace korvex::richtext {

/// Colours code without ever making the caller wait: the analysis of 20,000 units takes 22 to 270
/// milliseconds, and a key press may wait 16. So a CodeSyntax of its own works on a thread of its
/// own, which starts with the first request. Results are remembered by content and language. What
/// is still wanted is asked for again whenever `arrived` comes, and what nobody asks for again is
/// dropped: while somebody types, only the newest text is analysed. Main thread.
class CodeHighlighter {
public:
    /// `runLoop` and `log` must outlive the highlighter; `log` may be written from its thread.
    /// Without `makeEngine` all code stays uncoloured.
    CodeHighlighter(ScriptEngineFactory makeEngine, ResourceLookup resources,
                    base::RunLoop& runLoop, base::LogSink& log);
    /// Ends an analysis that runs.
    ~CodeHighlighter();

    /// The colours of a piece of code if they are known; else null, and `arrived` follows when they
    /// are. Valid until the next call and until the next `arrived`.
    const std::vector<ScopeRun>* scopes(std::u16string_view code, std::string_view language);
    /// The known languages if the engine has told them already; else the two that need no engine,
    /// and `arrived` follows.
    const std::vector<CodeLanguage>& languages();

    /// Comes when something that was asked for is known.
    base::Signal<>& arrived() { return m_arrived; }

private:
    class Worker;

    /// Starts the thread at the first call; null when none can be started.
    Worker* worker();
    void takeAnswers();

    ScriptEngineFactory m_makeEngine;
    ResourceLookup m_resources;
    base::RunLoop& m_runLoop;
    base::LogSink& m_log;
    base::Signal<> m_arrived;
    ScopeCache m_cache;
    std::vector<CodeLanguage> m_languages = CodeSyntax::firstLanguages();
    bool m_hasAskedLanguages = false;
    const std::vector<ScopeRun> m_noScopes;
    std::shared_ptr<Worker> m_worker;
};

} // namespace korvex::richtext
