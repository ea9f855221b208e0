#pragma once

#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/entries/BoardPage.h"

namespace korvex::tests {

/// The page of the Inbox, in sight and following the store.
class BoardPageFixture : public WindowFixture {
protected:
    BoardPageFixture() {
        list().setStyle(&still);
        changes = own.context.didChange().connect([this](const auto&) { page.refresh(); });
        page.resize(600, 400);
        page.show();
        page.showBoard(*inbox);
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    }

    static richtext::AttributedString plain(std::string_view text) {
        return richtext::RichTextSerializer::plainRichText(text);
    }
    model::Entry& addText(std::string_view text) {
        return own.entries.createText({.rich = plain(text), .board = *inbox, .now = clock.now()});
    }

    ui::EntryListView& list() { return page.list(); }
    void choose(const model::Entry& entry) {
        list().setCurrentRow(page.entries().rowOf(entry));
        list().setFocus();
    }
    /// Opens the editor of an entry as its row does.
    void edit(const model::Entry& entry) {
        choose(entry);
        QTest::keyClick(&list(), Qt::Key_Return);
        ASSERT_EQ(list().editedRow(), page.entries().rowOf(entry));
    }

    StillStyle still;
    ui::BoardPage page{workspace, theme};
    base::Subscription changes;
};

} // namespace korvex::tests
