#include "ui/workspace/FolderLook.h"

#include "support/FakeRunLoop.h"
#include "support/TemporaryFolder.h"
#include "ui/kit/words/Text.h"

#include <QApplication>
#include <QFileDialog>

#include <gtest/gtest.h>

#include <vector>

namespace korvex::ui {
namespace {

class FolderLookTest : public ::testing::Test {
protected:
    FolderLookTest() {
        loop.holdPosted();
        asker.show();
    }

    /// What threads post comes only when the test says so, as from one that waits for a folder.
    void takePosted() {
        loop.waitForPosted();
        loop.releasePosted();
        loop.runPosted();
        loop.holdPosted();
    }

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
    tests::FakeRunLoop loop;
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
    takePosted();
    if (folders = opened(); folders.empty()) { // the look before was the quicker one
        takePosted();
        folders = opened();
    }
    EXPECT_EQ(folders, std::vector{documents}) << "it is gone";

    ask(here);
    takePosted();
    EXPECT_EQ(opened(), std::vector{folder.path()});
    loop.advance(0.5);
    EXPECT_TRUE(opened().empty()) << "it has opened";
    ask({});
    EXPECT_EQ(opened(), std::vector{documents});
    ask(here);
    asker.hide();
    takePosted();
    EXPECT_TRUE(opened().empty()) << "nobody sees who asks";
}

} // namespace
} // namespace korvex::ui
