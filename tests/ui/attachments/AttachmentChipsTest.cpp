#include "ui/attachments/AttachmentChips.h"

#include "ui/WindowFixture.h"
#include "ui/attachments/AttachmentKind.h"
#include "ui/attachments/AttachmentSummaries.h"

#include <QImage>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Lt;

services::AttachmentList listOf(const std::vector<std::string>& names) {
    services::AttachmentList list;
    for (const auto& name : names) {
        list.attachments.push_back({.id = base::Uuid::random(), .filename = name, .size = 1536});
    }
    return list;
}

class AttachmentChipsTest : public tests::WindowFixture {};

TEST_F(AttachmentChipsTest, NamesShowNothingThatIsNotThere) {
    struct Case {
        const char* name;
        const char* shown;
    };
    for (const auto& [name, shown] : {
             Case{"plan.pdf", "plan.pdf"},
             Case{"räum auf.txt", "räum auf.txt"},
             Case{"two\nlines.txt", "two�lines.txt"},
             Case{"invoice\u202Efdp.exe", "invoice�fdp.exe"},
             Case{"a\u2066b\u200Bc.txt", "a�b�c.txt"},
         }) {
        EXPECT_EQ(toUtf8(shownFilename(name)), shown);
    }
    const auto longest = shownFilename(std::string(1000, 'x') + ".pdf");
    EXPECT_LT(longest.size(), 310);
    EXPECT_TRUE(longest.endsWith(QLatin1String(".pdf"))) << "the kind of file stays readable";
}

TEST_F(AttachmentChipsTest, KindsAreJudgedByTheName) {
    struct Case {
        const char* name;
        AttachmentKind kind;
    };
    for (const auto& [name, kind] :
         {Case{"a.png", AttachmentKind::picture}, Case{"A.JPG", AttachmentKind::picture},
          Case{"a.pdf", AttachmentKind::pdf}, Case{"a.odt", AttachmentKind::document},
          Case{"a.xlsx", AttachmentKind::sheet}, Case{"a.zip", AttachmentKind::archive},
          Case{"a.tar.gz", AttachmentKind::archive}, Case{"a.mp3", AttachmentKind::sound},
          Case{"a.mp4", AttachmentKind::film}, Case{"a.py", AttachmentKind::code},
          Case{"a.txt", AttachmentKind::text}, Case{"a", AttachmentKind::other}}) {
        EXPECT_EQ(attachmentKind(name), kind) << name;
    }
}

TEST_F(AttachmentChipsTest, ChipsStayInsideTheirRowAndApart) {
    const auto list = listOf({"a.pdf", std::string(200, 'w') + ".png", "minutes of the board.odt"});
    for (const int width : {60, 120, 200, 300, 500, 900, 2000}) {
        const AttachmentChips chips(list, width, theme);
        ASSERT_EQ(chips.count(), 3);
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(QRect(0, 0, width, chips.height()).contains(chips.rect(i)))
                << "chip " << i << " at " << width;
            for (int j = 0; j < i; ++j) {
                EXPECT_FALSE(chips.rect(i).intersects(chips.rect(j))) << width;
            }
            EXPECT_EQ(chips.chipAt(chips.rect(i).center()), i);
            EXPECT_EQ(chips.indexOf(list.attachments[static_cast<std::size_t>(i)].id), i);
        }
    }
    EXPECT_EQ(AttachmentChips(list, 2000, theme).rect(2).top(), 0)
        << "one line where there is room";
    EXPECT_GT(AttachmentChips(list, 300, theme).height(),
              AttachmentChips(list, 2000, theme).height());
}

TEST_F(AttachmentChipsTest, AListIsReadOnceUntilItsEntryChanges) {
    auto& entry = withFiles("big", {"big.bin"});
    AttachmentSummaries summaries(own.context);
    const auto* const first = &summaries.of(entry);
    EXPECT_EQ(first->attachments.front().size, 1536U);
    EXPECT_EQ(&summaries.of(entry), first);
    // With the time of the change untouched, as where two clocks agree by chance.
    entry.setAttachmentData(std::nullopt);
    own.context.save();
    EXPECT_TRUE(summaries.of(entry).attachments.empty());
}

} // namespace
} // namespace korvex::ui
