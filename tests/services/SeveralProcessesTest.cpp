#include "ServiceFixture.h"

#include <gmock/gmock.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <random>
#include <set>
#include <thread>

namespace korvex::tests {

using model::Entry;
using services::EntryService;

namespace {

/// How many changes each of the two programs makes; KORVEX_FULL_STRESS asks for the 10,000.
int changesPerProcess() {
    return std::getenv("KORVEX_FULL_STRESS") ? 10'000 : 1'500;
}

} // namespace

class SeveralProcessesTest : public ServiceFixture {
protected:
    pid_t start(unsigned seed, int changes) {
        const std::string arguments[] = {
            KORVEX_STORE_WORKER,
            (folder.path() / "Primary.store").string(),
            board->id().text(),
            std::to_string(seed),
            std::to_string(changes),
            (folder.path() / ("acknowledged-" + std::to_string(seed))).string(),
        };
        std::vector<char*> pointers;
        for (const auto& argument : arguments) {
            pointers.push_back(const_cast<char*>(argument.c_str()));
        }
        pointers.push_back(nullptr);
        pid_t child = -1;
        EXPECT_EQ(
            ::posix_spawn(&child, KORVEX_STORE_WORKER, nullptr, nullptr, pointers.data(), environ),
            0);
        return child;
    }

    static bool succeeded(pid_t child) {
        int status = 0;
        return ::waitpid(child, &status, 0) == child && WIFEXITED(status) &&
               WEXITSTATUS(status) == 0;
    }
};

TEST_F(SeveralProcessesTest, TwoWriteAndAThirdIsKilledAgainAndAgain) {
    add({"seen by all"});
    const auto& other = boards->createBoard("Office", kNow);
    const pid_t first = start(1, changesPerProcess());
    const pid_t second = start(2, changesPerProcess());
    std::mt19937 random(3);
    int kills = 0;
    siginfo_t ended{};
    const auto hasEnded = [&](pid_t child) {
        ended = {};
        return ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT) ==
                   0 &&
               ended.si_pid == child;
    };
    while (!hasEnded(first) || !hasEnded(second)) {
        const pid_t third = start(static_cast<unsigned>(100 + kills), 1'000'000);
        std::this_thread::sleep_for(std::chrono::milliseconds(5 + random() % 40));
        ::kill(third, SIGKILL);
        ::waitpid(third, nullptr, 0);
        ++kills;
    }
    EXPECT_TRUE(succeeded(first));
    EXPECT_TRUE(succeeded(second));
    EXPECT_GT(kills, 5);

    context->refresh();
    storedOrder(*board);
    storedOrder(other);
    std::set<std::string> stored;
    for (const Entry* entry : context->fetch<Entry>()) {
        stored.insert(entry->id().text());
    }
    std::set<std::string> acknowledged;
    std::set<std::string> deleted;
    for (const auto& each : std::filesystem::directory_iterator(folder.path())) {
        if (each.path().filename().string().starts_with("acknowledged-")) {
            std::ifstream lines(each.path());
            for (std::string line; std::getline(lines, line);) {
                if (line.starts_with('-')) {
                    deleted.insert(line.substr(1));
                } else {
                    acknowledged.insert(line);
                }
            }
        }
    }
    EXPECT_GT(acknowledged.size(), 100U);
    EXPECT_GT(deleted.size(), 100U);
    for (const auto& id : acknowledged) {
        EXPECT_TRUE(stored.contains(id) || deleted.contains(id)) << id << " was lost";
    }
    EXPECT_THAT(container->check().problems, testing::IsEmpty());
    // What a killed program may leave is one entry that it was not told of yet.
    EXPECT_LE(stored.size(), acknowledged.size() + 1 + static_cast<std::size_t>(kills));
}

} // namespace korvex::tests
