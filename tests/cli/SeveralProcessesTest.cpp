#include "KorvexProcess.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <random>
#include <thread>

namespace korvex::tests {
namespace {

/// KORVEX_CHANGES=10000 makes it the long run: that many changes of each writer.
int changesOfEachWriter() {
    const auto* text = std::getenv("KORVEX_CHANGES");
    return text != nullptr ? std::atoi(text) : 300;
}

/// What a writer was told is done: its todos, and whether each is completed.
using Acknowledged = std::map<std::string, bool>;

/// A person at a terminal of their own, changing their own todos on the common board.
class Writer {
public:
    Writer(std::string folder, unsigned seed) : m_folder(std::move(folder)), m_random(seed) {}

    void work(int changes) {
        for (int i = 0; i < changes; ++i) {
            change();
        }
    }

    /// Starts a change and kills it before, while or after it is saved.
    void workUntil(const std::atomic<bool>& isOver) {
        while (!isOver) {
            const KorvexProcess process(command());
            std::this_thread::sleep_for(std::chrono::microseconds(pick(12'000)));
            process.kill();
            acknowledge(process.wait());
            ++m_kills;
        }
    }

    const Acknowledged& acknowledged() const { return m_acknowledged; }
    const std::vector<std::string>& failures() const { return m_failures; }
    int kills() const { return m_kills; }

private:
    enum class Kind { add, move, complete, restore };

    std::size_t pick(std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_random);
    }

    /// One of its todos in that state; empty when there is none.
    std::string anyTodo(bool isCompleted) {
        std::vector<std::string> candidates;
        for (const auto& [id, completed] : m_acknowledged) {
            if (completed == isCompleted) {
                candidates.push_back(id);
            }
        }
        return candidates.empty() ? std::string() : candidates[pick(candidates.size())];
    }

    std::vector<std::string> command() {
        const auto open = anyTodo(false);
        const auto completed = anyTodo(true);
        const auto dice = pick(10);
        m_kind = Kind::add;
        m_target = open;
        if (dice < 3 && !open.empty()) {
            m_kind = Kind::move;
            const auto by = std::to_string(static_cast<int>(pick(9)) - 4);
            return {"--data-dir", m_folder, "move", open, "--by", by};
        }
        if (dice < 5 && !open.empty()) {
            m_kind = Kind::complete;
            return {"--data-dir", m_folder, "complete", open};
        }
        if (dice < 6 && !completed.empty()) {
            m_kind = Kind::restore;
            m_target = completed;
            return {"--data-dir", m_folder, "restore", completed, "--position", "1"};
        }
        std::vector<std::string> add{"--data-dir", m_folder, "add", "a todo"};
        if (dice < 8 && !open.empty()) {
            add.insert(add.end(), {"--before", open});
        }
        return add;
    }

    void change() {
        const KorvexProcess process(command());
        const auto end = process.wait();
        if (end.status != 0) {
            m_failures.push_back("ended with " + std::to_string(end.status));
        }
        acknowledge(end);
    }

    /// An identifier is printed after the save, so a whole one is a promise even of who is killed
    /// then. Of the other changes only the exit status tells.
    void acknowledge(const KorvexProcess::End& end) {
        constexpr std::size_t kLine = 37;
        if (m_kind == Kind::add && end.output.size() == kLine) {
            m_acknowledged[end.output.substr(0, kLine - 1)] = false;
        } else if (m_kind == Kind::complete || m_kind == Kind::restore) {
            if (end.status == 0) {
                m_acknowledged[m_target] = m_kind == Kind::complete;
            } else {
                m_acknowledged.erase(m_target); // either way is right, so nothing is expected
            }
        }
    }

    std::string m_folder;
    std::mt19937 m_random;
    Kind m_kind = Kind::add;
    std::string m_target;
    Acknowledged m_acknowledged;
    std::vector<std::string> m_failures;
    int m_kills = 0;
};

/// The entries of a list as the command line prints it; adds their places on the board to `order`.
Acknowledged listed(const std::string& folder, bool completed, std::vector<std::int64_t>& order) {
    std::vector<std::string> arguments{"--data-dir", folder, "list", "--json"};
    if (completed) {
        arguments.push_back("--completed");
    }
    const auto end = KorvexProcess(arguments).wait();
    EXPECT_EQ(end.status, 0);
    rapidjson::Document document;
    document.Parse(end.output.c_str());
    EXPECT_TRUE(document.IsArray());
    Acknowledged result;
    for (const auto& entry : document.GetArray()) {
        result[entry["id"].GetString()] = entry["isCompleted"].GetBool();
        order.push_back(entry["sortOrder"].GetInt64());
    }
    return result;
}

TEST(SeveralCommandLines, NothingAcknowledgedIsLostAndTheOrderStaysDense) {
    const TemporaryFolder temporary;
    const auto folder = temporary.path().string();
    ASSERT_EQ(KorvexProcess({"--data-dir", folder, "boards"}).wait().status, 0);

    const auto changes = changesOfEachWriter();
    Writer first(folder, 1);
    Writer second(folder, 2);
    Writer killed(folder, 3);
    std::atomic<bool> isOver = false;
    std::thread killing([&] { killed.workUntil(isOver); });
    std::thread writing([&] { second.work(changes); });
    first.work(changes);
    writing.join();
    isOver = true;
    killing.join();

    EXPECT_TRUE(first.failures().empty()) << first.failures().front();
    EXPECT_TRUE(second.failures().empty()) << second.failures().front();
    EXPECT_GT(killed.kills(), 0);

    std::vector<std::int64_t> order;
    auto stored = listed(folder, false, order);
    stored.merge(listed(folder, true, order));
    for (const auto* writer : {&first, &second, &killed}) {
        for (const auto& [id, isCompleted] : writer->acknowledged()) {
            const auto found = stored.find(id);
            ASSERT_NE(found, stored.end()) << id << " is lost";
            EXPECT_EQ(found->second, isCompleted) << id;
        }
    }
    std::sort(order.begin(), order.end());
    for (std::size_t i = 0; i < order.size(); ++i) {
        ASSERT_EQ(order[i], static_cast<std::int64_t>(i));
    }
    const auto check = KorvexProcess({"--data-dir", folder, "store", "check"}).wait();
    EXPECT_EQ(check.status, 0) << check.output;
}

} // namespace
} // namespace korvex::tests
