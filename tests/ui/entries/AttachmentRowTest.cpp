#include "ui/WindowFixture.h"
#include "ui/attachments/AttachmentKind.h"
#include "ui/entries/EntryItemDelegate.h"

namespace korvex::ui {
namespace {

class AttachmentRowTest : public tests::WindowFixture {};

TEST_F(AttachmentRowTest, ARowIsHigherByItsChipsAndFollowsTheStore) {
    auto& plain = *add({"Buy milk"}).front();
    auto& entry = withFiles("Renew passport", {"photo.png", "form.pdf"});
    EntryListModel model(workspace.context, workspace.serializer, workspace.scheduleClock,
                         workspace.dates);
    const auto changes = own.context.didChange().connect([&](const auto&) { model.refresh(); });
    model.setBoard(inbox);
    EntryItemDelegate delegate(model, workspace.code, theme);
    delegate.setRoom({.width = 500, .most = 500});
    QObject::connect(&model, &QAbstractItemModel::dataChanged, &model,
                     [&](const QModelIndex& index) { delegate.forget(index.row()); });
    const auto height = [&](const model::Entry& of) {
        return delegate.layout(model.rowOf(of)).height();
    };
    const auto* const chips = delegate.layout(model.rowOf(entry)).chips();
    ASSERT_TRUE(chips);
    EXPECT_EQ(height(entry), height(plain) + chips->height() + AttachmentChips::distance(theme));

    clock.advance(1);
    own.entries.removeAttachment(model.attachments(model.rowOf(entry)).attachments.front().id,
                                 entry, clock.now());
    EXPECT_EQ(delegate.layout(model.rowOf(entry)).chips()->count(), 1);
    elsewhere([&](tests::StoreClient& client) {
        auto& same = theirs(client, entry);
        client.entries.removeAttachment(services::attachmentsOf(same).attachments.front().id, same,
                                        kNow + 100);
    });
    EXPECT_EQ(height(entry), height(plain)) << "another program took the last one away";
}

TEST_F(AttachmentRowTest, AScreenReaderHearsTheFiles) {
    withFiles("one", {"a.pdf"});
    withFiles("two", {"a.pdf", "b.png"});
    EntryListModel model(workspace.context, workspace.serializer, workspace.scheduleClock,
                         workspace.dates);
    model.setBoard(inbox);
    const auto description = [&](int row) {
        return toUtf8(model.data(model.index(row, 0), Qt::AccessibleDescriptionRole).toString());
    };
    EXPECT_EQ(description(0), "Open, 1 attachment: a.pdf");
    EXPECT_EQ(description(1), "Open, 2 attachments: a.pdf, b.png");
}

TEST_F(AttachmentRowTest, ADamagedListIsToldOfAndNotTouched) {
    auto& entry = *add({"broken"}).front();
    entry.setAttachmentData(base::Bytes{'b', 'p', 'l', 'i', 's', 't', '?'});
    own.context.save();
    EntryListModel model(workspace.context, workspace.serializer, workspace.scheduleClock,
                         workspace.dates);
    model.setBoard(inbox);
    EntryItemDelegate delegate(model, workspace.code, theme);
    delegate.setRoom({.width = 500, .most = 500});
    const auto* const chips = delegate.layout(0).chips();
    ASSERT_TRUE(chips);
    EXPECT_EQ(chips->count(), 1);
    EXPECT_FALSE(chips->idOf(0));
    EXPECT_EQ(toUtf8(accessibleTextOf(model.attachments(0))), "Attachments could not be read");
    EXPECT_FALSE(own.context.hasChanges());
}

} // namespace
} // namespace korvex::ui
