#include "store/faults/FaultProgram.h"

#include "model/SchemaVersions.h"
#include "services/EntryOrder.h"

#include <spawn.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <sstream>
#include <thread>
#include <tuple>

namespace korvex::faults {

namespace {

/// Well above what a command takes that nothing holds up.
constexpr std::chrono::milliseconds kPatience{400};
constexpr std::chrono::milliseconds kBetweenLooks{2};

std::string_view nameOf(storage::Stage stage) {
    switch (stage) {
    case storage::Stage::reading:
        return "reading";
    case storage::Stage::checking:
        return "checking";
    case storage::Stage::writing:
        return "writing";
    case storage::Stage::verifying:
        return "verifying";
    case storage::Stage::replacing:
        return "replacing";
    }
    return "";
}

void tell(std::ostream& text, std::vector<model::Entry*> entries) {
    std::sort(entries.begin(), entries.end(),
              [](const auto* left, const auto* right) { return services::ordered(*left, *right); });
    for (const model::Entry* entry : entries) {
        text << ' ' << entry->sortOrder() << (entry->isCompleted() ? '+' : '-')
             << entry->typeRawValue() << ':' << entry->content() << '/'
             << entry->richTextData().value_or(base::Bytes()).size() << '&'
             << entry->attachmentData().value_or(base::Bytes()).size() << '@'
             << entry->updatedAt().seconds;
    }
}

} // namespace

void say(const std::string& line) {
    std::string text = line + "\n";
    const iovec piece{text.data(), text.size()};
    if (::writev(STDOUT_FILENO, &piece, 1) < 0) {
        ::_exit(9);
    }
}

Steps::~Steps() {
    waitForCommand(0);
}

bool Steps::waitForCommand(int options) {
    if (m_process != 0 && ::waitpid(m_process, nullptr, options) == 0) {
        return false;
    }
    m_process = 0;
    return true;
}

void Steps::reached(std::string_view name) {
    if (m_step < 0) {
        return;
    }
    say("step " + std::string(name));
    if (++m_reached != m_step) {
        return;
    }
    std::string shell = "sh";
    std::string option = "-c";
    std::array<char*, 4> arguments{shell.data(), option.data(), m_command.data(), nullptr};
    if (::posix_spawn(&m_process, "/bin/sh", nullptr, nullptr, arguments.data(), ::environ) != 0) {
        say("WRONG: no command was run");
        m_process = 0;
    }
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!waitForCommand(WNOHANG) && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kBetweenLooks);
    }
}

storage::Work Steps::work() {
    return storage::Work([this](const storage::Progress& progress) {
        // A stage begins with nothing done; its work is a step too, where it tells of some.
        if (progress.fraction == 0 || progress.stage != m_stage) {
            m_stage = progress.stage;
            reached(nameOf(progress.stage));
        }
    });
}

void Program::open(const std::filesystem::path& storeFile,
                   store::ModelConfiguration::Missing whenMissing) {
    file = storeFile;
    folder = file.parent_path();
    container =
        store::ModelContainer::open(model::currentSchema(),
                                    {.file = file,
                                     .whenMissing = whenMissing,
                                     .whenOlder = store::ModelConfiguration::Older::upgrade},
                                    log);
    context = std::make_unique<store::ModelContext>(*container);
}

std::vector<model::Entry*> Program::todos() {
    return services::activeTodos(inbox());
}

std::string Program::state() {
    std::ostringstream text;
    auto all = context->fetch<model::Board>();
    std::sort(all.begin(), all.end(), [](const auto* left, const auto* right) {
        return std::tuple(left->sortOrder(), left->name(), left->id()) <
               std::tuple(right->sortOrder(), right->name(), right->id());
    });
    for (const model::Board* board : all) {
        text << '[' << board->name() << ']';
        tell(text, board->entries());
    }
    auto lost = context->fetch<model::Entry>();
    std::erase_if(lost, [](const model::Entry* entry) { return entry->board(); });
    if (!lost.empty()) {
        text << "without a board:";
        tell(text, std::move(lost));
    }
    return text.str();
}

} // namespace korvex::faults
