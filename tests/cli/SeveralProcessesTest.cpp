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
#include <set>
#include <string_view>
#include <thread>

namespace korvex::tests {
namespace {

/// KORVEX_CHANGES=10000 makes it the long run: that many changes of each writer.
int changesOfEachWriter() {
    const auto* text = std::getenv("KORVEX_CHANGES");
    return text ? std::atoi(text) : 300;
}

enum class State { open, completed, text, deleted };

/// What a writer was told is done: its entries, and how each ended up.
using Acknowledged = std::map<std::string, State>;

/// A person at a terminal of their own, changing their own entries on the common board.
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
    enum class Kind { add, note, split, move, change };

    std::size_t pick(std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(m_random);
    }

    /// One of its entries in that state; empty when there is none.
    std::string any(State state) {
        std::vector<std::string> candidates;
        for (const auto& [id, is] : m_acknowledged) {
            if (is == state) {
                candidates.push_back(id);
            }
        }
        return candidates.empty() ? std::string() : candidates[pick(candidates.size())];
    }

    std::vector<std::string> chosen(Kind kind, std::string target,
                                    std::vector<std::string> command) {
        m_kind = kind;
        m_target = std::move(target);
        command.insert(command.begin(), {"--data-dir", m_folder});
        return command;
    }
    std::vector<std::string> changed(const std::string& target, State becomes,
                                     std::vector<std::string> command) {
        m_becomes = becomes;
        m_unsplit.erase(target);
        return chosen(Kind::change, target, std::move(command));
    }

    std::vector<std::string> command() {
        const auto open = any(State::open);
        const auto completed = any(State::completed);
        const auto text = any(State::text);
        const auto dice = pick(15);
        if (dice < 3 && !open.empty()) {
            const auto by = std::to_string(static_cast<int>(pick(9)) - 4);
            return chosen(Kind::move, open, {"move", open, "--by", by});
        }
        if (dice < 5 && !open.empty()) {
            return changed(open, State::completed, {"complete", open});
        }
        if (dice < 6 && !completed.empty()) {
            return changed(completed, State::open, {"restore", completed, "--position", "1"});
        }
        if (dice < 7 && !completed.empty()) {
            return changed(completed, State::text, {"type", completed, "text"});
        }
        if (dice < 8 && !text.empty()) {
            return changed(text, State::open, {"type", text, "todo"});
        }
        if (dice < 9 && !text.empty()) {
            return changed(text, State::deleted, {"delete", text});
        }
        if (dice < 10 && !m_unsplit.empty()) {
            const auto whole = *m_unsplit.begin();
            m_unsplit.erase(whole);
            return chosen(Kind::split, whole, {"split", whole, "--at", "4"});
        }
        const auto isText = dice < 12;
        auto add = isText ? std::vector<std::string>{"note", "two halves"}
                          : std::vector<std::string>{"add", "a todo"};
        if (pick(2) == 0 && !open.empty()) {
            add.insert(add.end(), {"--before", open});
        }
        return chosen(isText ? Kind::note : Kind::add, {}, std::move(add));
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
        if (m_kind == Kind::change) {
            if (end.status == 0) {
                m_acknowledged[m_target] = m_becomes;
            } else {
                m_acknowledged.erase(m_target); // either way is right, so nothing is expected
            }
        } else if (m_kind != Kind::move && end.output.size() == kLine) {
            const auto id = end.output.substr(0, kLine - 1);
            m_acknowledged[id] = m_kind == Kind::add ? State::open : State::text;
            if (m_kind == Kind::note) {
                m_unsplit.insert(id);
            }
        }
    }

    std::string m_folder;
    std::mt19937 m_random;
    Kind m_kind = Kind::add;
    std::string m_target;
    State m_becomes = State::open;
    /// Its texts that still can be split.
    std::set<std::string> m_unsplit;
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
        const auto isText = std::string_view(entry["type"].GetString()) == "text";
        result[entry["id"].GetString()] = isText                           ? State::text
                                          : entry["isCompleted"].GetBool() ? State::completed
                                                                           : State::open;
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
        for (const auto& [id, state] : writer->acknowledged()) {
            const auto found = stored.find(id);
            EXPECT_EQ(found == stored.end() ? State::deleted : found->second, state) << id;
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
