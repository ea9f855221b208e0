#include "richtext/code/CodeHighlighter.h"

#include "richtext/code/HighlightQueue.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace korvex::richtext {

namespace {

constexpr std::size_t kRememberedUnits = 2'000'000;

} // namespace

/// The thread and what it shares with the main one.
class CodeHighlighter::Worker {
public:
    struct Answers {
        std::vector<std::pair<CodeKey, std::vector<ScopeRun>>> scopes;
        std::optional<std::vector<CodeLanguage>> languages;
    };

    /// `post` is called on the thread when there are answers to take.
    Worker(ScriptEngineFactory makeEngine, ResourceLookup resources, base::LogSink& log,
           std::function<void()> post)
        : m_post(std::move(post)),
          m_log(log, "CodeHighlighter"),
          m_thread(
              [this, makeEngine = std::move(makeEngine), resources = std::move(resources), &log] {
                  // The thread that makes an engine also ends it.
                  CodeSyntax syntax(makeEngine, resources, log, m_stop.get_token());
                  work(syntax);
              }) {}

    void stop() {
        m_stop.request_stop();
        m_thread.join();
    }

    void request(CodeKey key, std::u16string_view code) {
        const std::lock_guard lock(m_mutex);
        if (m_running != key && !hasAnswer(key)) {
            m_queue.ask(std::move(key), code);
            m_wake.notify_one();
        }
    }

    void requestLanguages() {
        const std::lock_guard lock(m_mutex);
        m_wantsLanguages = true;
        m_wake.notify_one();
    }

    Answers takeAnswers() {
        const std::lock_guard lock(m_mutex);
        m_queue.forgetUnwanted();
        m_isPosted = false;
        return std::exchange(m_answers, {});
    }

private:
    void work(CodeSyntax& syntax) {
        const auto stop = m_stop.get_token();
        std::unique_lock lock(m_mutex);
        while (m_wake.wait(lock, stop, [&] { return m_wantsLanguages || !m_queue.isEmpty(); }) &&
               !stop.stop_requested()) {
            if (std::exchange(m_wantsLanguages, false)) {
                lock.unlock();
                auto languages = safely([&] { return syntax.languages(); });
                lock.lock();
                m_answers.languages = std::move(languages);
            } else {
                auto request = m_queue.takeNewest();
                m_running = request.key;
                lock.unlock();
                auto scopes =
                    safely([&] { return syntax.scopes(request.code, request.key.language); });
                lock.lock();
                m_running.reset();
                m_answers.scopes.emplace_back(std::move(request.key), std::move(scopes));
            }
            if (!std::exchange(m_isPosted, true)) {
                lock.unlock();
                m_post();
                lock.lock();
            }
        }
    }

    /// A failure costs the colours of one piece of code, not the program.
    template <typename Work>
    auto safely(Work&& work) -> decltype(work()) {
        try {
            return work();
        } catch (const std::exception& failure) {
            m_log.error(failure.what());
            return {};
        }
    }

    bool hasAnswer(const CodeKey& key) const {
        for (const auto& [known, scopes] : m_answers.scopes) {
            if (known == key) {
                return true;
            }
        }
        return false;
    }

    const std::function<void()> m_post;
    std::stop_source m_stop;
    base::Logger m_log;

    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    HighlightQueue m_queue;
    std::optional<CodeKey> m_running;
    bool m_wantsLanguages = false;
    bool m_isPosted = false;
    Answers m_answers;

    std::thread m_thread;
};

CodeHighlighter::CodeHighlighter(ScriptEngineFactory makeEngine, ResourceLookup resources,
                                 base::RunLoop& runLoop, base::LogSink& log)
    : m_makeEngine(std::move(makeEngine)),
      m_resources(std::move(resources)),
      m_runLoop(runLoop),
      m_log(log),
      m_cache(kRememberedUnits) {}

CodeHighlighter::~CodeHighlighter() {
    if (m_worker) {
        m_worker->stop();
    }
}

CodeHighlighter::Worker* CodeHighlighter::worker() {
    if (!m_worker && m_makeEngine) {
        // What is posted may come when the highlighter is gone.
        const auto receiver = std::make_shared<std::weak_ptr<Worker>>();
        const auto post = [this, receiver] {
            m_runLoop.post([this, receiver] {
                if (!receiver->expired()) {
                    takeAnswers();
                }
            });
        };
        try {
            m_worker = std::make_shared<Worker>(m_makeEngine, m_resources, m_log, post);
            *receiver = m_worker;
        } catch (const std::system_error& failure) {
            base::Logger(m_log, "CodeHighlighter").error(failure.what());
            m_makeEngine = nullptr;
        }
    }
    return m_worker.get();
}

const std::vector<ScopeRun>* CodeHighlighter::scopes(std::u16string_view code,
                                                     std::string_view language) {
    if (!m_makeEngine || !CodeSyntax::isHighlightable(code, language)) {
        return &m_noScopes;
    }
    auto key = CodeKey::of(code, language);
    if (const auto* const known = m_cache.find(key)) {
        return known;
    }
    auto* const thread = worker();
    if (!thread) {
        return &m_noScopes;
    }
    thread->request(std::move(key), code);
    return nullptr;
}

const std::vector<CodeLanguage>& CodeHighlighter::languages() {
    if (!std::exchange(m_hasAskedLanguages, true)) {
        if (auto* const thread = worker()) {
            thread->requestLanguages();
        }
    }
    return m_languages;
}

void CodeHighlighter::takeAnswers() {
    auto answers = m_worker->takeAnswers();
    for (auto& [key, scopes] : answers.scopes) {
        m_cache.insert(std::move(key), std::move(scopes));
    }
    if (answers.languages) {
        m_languages = std::move(*answers.languages);
    }
    // An observer may destroy the highlighter.
    m_arrived.emit();
}

} // namespace korvex::richtext
