#include "platform/qt/SingleInstance.h"

#include "support/TemporaryFolder.h"

#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <barrier>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace korvex::platform::qt {
namespace {

class SingleInstanceTest : public ::testing::Test {
protected:
    SingleInstanceTest() {
        qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(m_runtime.path().string()));
    }

    std::unique_ptr<SingleInstance> start() const {
        return std::make_unique<SingleInstance>(data.path());
    }
    /// The socket's file; there is one first instance.
    std::filesystem::path name() const {
        for (const auto& each : std::filesystem::directory_iterator(m_runtime.path())) {
            if (each.is_socket()) {
                return each.path();
            }
        }
        throw std::logic_error("nobody has the name");
    }
    /// What one leaves that is killed.
    void leaveSocket() const {
        auto killed = start();
        EXPECT_FALSE(killed->raiseRunning());
        const auto file = name();
        std::filesystem::rename(file, data / "kept");
        killed.reset();
        std::filesystem::rename(data / "kept", file);
    }

    const tests::TemporaryFolder data;

private:
    const tests::TemporaryFolder m_runtime;
};

TEST_F(SingleInstanceTest, ASecondStartRaisesTheFirstAndAnotherFolderDoesNot) {
    SingleInstance first(data.path());
    EXPECT_FALSE(first.raiseRunning()) << "nobody runs yet";
    int raised = 0;
    const auto counting = first.raiseRequested().connect([&] { ++raised; });
    EXPECT_FALSE(SingleInstance(data / "other").raiseRunning());
    EXPECT_TRUE(start()->raiseRunning()) << "it only begins";
    first.listen();
    EXPECT_TRUE(start()->raiseRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised == 2; }));
    first.close();
    EXPECT_FALSE(start()->raiseRunning());
}

TEST_F(SingleInstanceTest, OfStartsAtTheSameMomentOneIsTheFirst) {
    constexpr int kStarts = 4;
    for (int round = 0; round < 50; ++round) {
        leaveSocket();
        std::vector<std::unique_ptr<SingleInstance>> instances(kStarts);
        std::vector<int> wasRaised(kStarts);
        std::barrier together(kStarts);
        {
            std::vector<std::jthread> starts;
            for (std::size_t i = 0; i < kStarts; ++i) {
                starts.emplace_back([&, i] {
                    instances[i] = start();
                    together.arrive_and_wait();
                    wasRaised[i] = instances[i]->raiseRunning() ? 1 : 0;
                });
            }
        }
        EXPECT_EQ(std::count(wasRaised.begin(), wasRaised.end(), 0), 1);
    }
}

TEST_F(SingleInstanceTest, WhoRunsKeepsTheNameAlsoWhileItDoesNotAnswer) {
    SingleInstance busy(data.path());
    EXPECT_FALSE(busy.raiseRunning());
    int asked = 0;
    while (start()->raiseRunning()) {
        ASSERT_LT(++asked, 10'000) << "somebody reads it";
    }
    {
        SingleInstance last(data.path());
        EXPECT_FALSE(last.raiseRunning()) << "which opens a window of its own";
        last.listen();
    }
    int raised = 0;
    const auto counting = busy.raiseRequested().connect([&] { ++raised; });
    busy.listen();
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised == asked; }));
    EXPECT_TRUE(start()->raiseRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised == asked + 1; }));
}

} // namespace
} // namespace korvex::platform::qt
