#include "ui/workspace/FolderLook.h"

#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"

#include <QPointer>
#include <QWidget>

#include <chrono>
#include <filesystem>
#include <utility>

namespace korvex::ui {

namespace {

/// Whoever has pressed a button hardly notices.
constexpr std::chrono::milliseconds kPatience{200};

} // namespace

void FolderLook::ask(FileQuestion question, QWidget& asker, FileQuestion::Receive receive) {
    const auto folder = std::exchange(question.folder, {});
    m_ask = [question = std::move(question), asking = QPointer<QWidget>(&asker),
             receive = std::move(receive)](const QString& found) mutable {
        if (asking && asking->isVisible()) {
            question.folder = found;
            question.ask(*asking, std::move(receive));
        }
    };
    const auto isLookedAt = folder.isEmpty() || (m_look && folder == m_folder);
    if (!isLookedAt) {
        m_folder = folder;
        look();
    } else if (folder.isEmpty() || !m_patience) { // the look before has not come back yet
        open({});
    }
}

void FolderLook::look() {
    m_patience = m_runLoop.callAfter(kPatience, [this] { open({}); });
    m_look = std::make_unique<storage::BackgroundTask>(
        m_threads, m_runLoop,
        [folder = toPath(m_folder)](storage::Work&) {
            std::error_code error; // then it is as good as none
            return std::filesystem::is_directory(folder, error);
        },
        [this](std::future<bool> outcome) {
            m_look.reset();
            auto isThere = false;
            static_cast<void>(refusal([&] { isThere = outcome.get(); })); // nobody could look
            open(isThere ? m_folder : QString());
        });
}

void FolderLook::open(const QString& folder) {
    m_patience.reset();
    if (const auto ask = std::exchange(m_ask, nullptr)) {
        ask(folder);
    }
}

} // namespace korvex::ui
