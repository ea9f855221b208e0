#include "ui/workspace/FolderLook.h"

#include "support/FakeRunLoop.h"
#include "support/TemporaryFolder.h"
#include "ui/kit/words/Text.h"

#include <QApplication>
#include <QFileDialog>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace korvex::ui {
namespace {

/// What threads post comes only when the test says so, as from one that waits for a folder.
class LateRunLoop final : public base::RunLoop {
public:
    void post(std::function<void()> work) override { m_late.post(std::move(work)); }
    std::unique_ptr<Timer> callAfter(std::chrono::duration<double> delay,
                                     std::function<void()> work) override {
        return m_timers.callAfter(delay, std::move(work));
    }
    std::unique_ptr<Watch> watch(int descriptor, Interest interest,
                                 std::function<void()> work) override {
        return m_late.watch(descriptor, interest, std::move(work));
    }

    void advance(double seconds) { m_timers.advance(seconds); }
    void takePosted() {
        m_late.waitForPosted();
        m_late.runPosted();
    }

private:
    tests::FakeRunLoop m_late;
    tests::FakeRunLoop m_timers;
};

class FolderLookTest : public ::testing::Test {
protected:
    FolderLookTest() { asker.show(); }

    void ask(const QString& remembered) {
        look.ask({.title = remembered, .kind = FileQuestion::Kind::folder, .folder = remembered},
                 asker, [](const auto&) {});
    }
    /// Where each dialog stands that has opened since.
    std::vector<std::filesystem::path> opened() {
        std::vector<std::filesystem::path> folders;
        for (auto* const each : asker.findChildren<QFileDialog*>()) {
            folders.push_back(toPath(each->directory().path()));
            delete each;
        }
        return folders;
    }

    const tests::TemporaryFolder folder;
    const QString here = toQString(folder.path().native());
    LateRunLoop loop;
    storage::BackgroundThreads threads;
    QWidget asker;
    FolderLook look{threads, loop};
};

TEST_F(FolderLookTest, WhoAsksWaitsAMomentForAFolderThatDoesNotAnswer) {
    for (int i = 0; i < 2; ++i) { // a second press of the button opens no second dialog
        ask(here);
    }
    EXPECT_TRUE(opened().empty());
    loop.advance(0.5);
    auto folders = opened();
    ASSERT_EQ(folders.size(), 1U);
    const auto documents = folders.front();
    EXPECT_NE(documents, folder.path());
    ask(here);
    EXPECT_EQ(opened(), std::vector{documents}) << "it still has not answered";
    ask(toQString((folder / "gone").native()));
    EXPECT_TRUE(opened().empty());
    loop.takePosted();
    if (folders = opened(); folders.empty()) { // the look before was the quicker one
        loop.takePosted();
        folders = opened();
    }
    EXPECT_EQ(folders, std::vector{documents}) << "it is gone";

    ask(here);
    loop.takePosted();
    EXPECT_EQ(opened(), std::vector{folder.path()});
    loop.advance(0.5);
    EXPECT_TRUE(opened().empty()) << "it has opened";
    ask({});
    EXPECT_EQ(opened(), std::vector{documents});
    ask(here);
    asker.hide();
    loop.takePosted();
    EXPECT_TRUE(opened().empty()) << "nobody sees who asks";
}

} // namespace
} // namespace korvex::ui
