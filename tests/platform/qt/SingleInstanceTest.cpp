#include "platform/qt/SingleInstance.h"

#include "support/TemporaryFolder.h"

#include <QTest>

#include <gtest/gtest.h>

namespace korvex::platform::qt {
namespace {

TEST(SingleInstance, ASecondStartRaisesTheFirstAndAnotherFolderDoesNot) {
    const tests::TemporaryFolder runtime;
    const tests::TemporaryFolder data;
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime.path().string()));
    SingleInstance first(data.path());
    EXPECT_FALSE(first.raiseRunning()) << "nobody runs yet";
    first.listen();
    int raised = 0;
    const auto counting = first.raiseRequested().connect([&] { ++raised; });
    EXPECT_FALSE(SingleInstance(data / "other").raiseRunning());
    EXPECT_TRUE(SingleInstance(data.path()).raiseRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return raised == 1; }));
}

TEST(SingleInstance, TheNameIsTakenFromAKilledOneAndStaysWithWhoTookItLast) {
    const tests::TemporaryFolder runtime;
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtime.path().string()));
    const auto start = [&] {
        auto instance = std::make_unique<SingleInstance>(runtime.path());
        EXPECT_FALSE(instance->raiseRunning());
        instance->listen();
        return instance;
    };
    auto killed = start();
    const auto file = std::filesystem::directory_iterator(runtime.path())->path();
    std::filesystem::rename(file, runtime / "kept");
    killed.reset();
    std::filesystem::rename(runtime / "kept", file);

    auto slow = start();
    SingleInstance last(runtime.path());
    last.listen(); // did not wait for an answer any longer
    slow.reset();
    EXPECT_TRUE(SingleInstance(runtime.path()).raiseRunning());
}

} // namespace
} // namespace korvex::platform::qt
