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

} // namespace
} // namespace korvex::platform::qt
