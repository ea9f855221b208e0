#include "richtext/text/HeadingLevel.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/BoardPageFixture.h"
#include "ui/entries/ShownRefusal.h"
#include "ui/kit/overlays/ErrorBanner.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QUrl>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// Takes what would open in another program.
class Opener final : public QObject {
    Q_OBJECT

public:
    Opener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Opener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    std::vector<std::filesystem::path> files;

public Q_SLOTS:
    void open(const QUrl& url) { files.emplace_back(url.toLocalFile().toStdString()); }
};

std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class AttachmentPageTest : public tests::BoardPageFixture {
protected:
    AttachmentPageTest() { list().setFocus(); }

    QWidget& viewport() { return *list().viewport(); }
    std::string message() { return toUtf8(page.banner().message()); }

    QString file(const char* name, std::string_view contents = "contents") {
        const auto path = folder / name;
        std::ofstream(path, std::ios::binary) << contents;
        return QString::fromStdString(path.string());
    }
    void attach(model::Entry& entry, const std::vector<std::string>& names) {
        clock.advance(1);
        std::vector<model::EntryAttachment> files;
        for (const auto& name : names) {
            files.push_back({.id = base::Uuid::random(),
                             .filename = name,
                             .data = base::Bytes(name.begin(), name.end())});
        }
        own.entries.attach(std::move(files), entry, clock.now());
        clock.advance(1);
    }
    /// As a new reader of the store sees them.
    std::vector<std::string> namesOf(const model::Entry& entry) {
        store::ModelContext fresh(*own.container);
        std::vector<std::string> names;
        for (const auto& each :
             services::attachmentsOf(*fresh.find<model::Entry>(entry.id())).attachments) {
            names.push_back(each.filename);
        }
        return names;
    }
    base::Uuid idOf(const model::Entry& entry, std::size_t index) {
        return services::attachmentsOf(entry).attachments[index].id;
    }

    QPoint middleOf(const model::Entry& entry) {
        const auto rect = list().visualRect(page.entries().index(page.entries().rowOf(entry), 0));
        return {rect.left() + rect.width() * 3 / 4, rect.top() + 14};
    }
    QRect chip(const model::Entry& entry, int index) {
        const auto shown = list().chips().of(page.entries().rowOf(entry));
        EXPECT_TRUE(shown);
        return !shown ? QRect() : shown->chips->rect(index).translated(shown->topLeft);
    }

    /// What a window system sends; the action that the drop ends with.
    Qt::DropAction drag(const QMimeData& data, const QPoint& position, QWidget* onto = nullptr,
                        Qt::DropActions possible = Qt::CopyAction | Qt::MoveAction) {
        clock.advance(1);
        auto* const target = onto ? onto : &viewport();
        QDragEnterEvent enter(position, possible, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDragMoveEvent move(position, possible, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &move);
        if (!move.isAccepted()) {
            QDragLeaveEvent leave;
            QApplication::sendEvent(target, &leave);
            return Qt::IgnoreAction;
        }
        QDropEvent drop(position, possible, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
        return drop.isAccepted() ? drop.dropAction() : Qt::IgnoreAction;
    }
    Qt::DropAction dropFiles(const QStringList& files, const QPoint& position,
                             QWidget* onto = nullptr) {
        QMimeData data;
        QList<QUrl> urls;
        for (const auto& each : files) {
            urls.append(QUrl::fromLocalFile(each));
        }
        data.setUrls(urls);
        return drag(data, position, onto);
    }
    Qt::DropAction moveChip(const model::Entry& from, std::size_t index, const QPoint& position) {
        QMimeData data;
        data.setData(QStringLiteral("dev.korvex.attachment-move"),
                     QByteArray::fromStdString(from.id().text() + '\n' + idOf(from, index).text()));
        return drag(data, position);
    }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) {
        clock.advance(1);
        QTest::keyClick(&list(), which, modifiers);
    }
    static void copyFiles(const QStringList& files) {
        auto* const data = new QMimeData;
        QList<QUrl> urls;
        for (const auto& each : files) {
            urls.append(QUrl::fromLocalFile(each));
        }
        data->setUrls(urls);
        data->setText(files.join(QLatin1Char('\n'))); // as file managers do
        QApplication::clipboard()->setMimeData(data);
    }
    static void copyPicture() {
        QImage image(8, 8, QImage::Format_RGB32);
        image.fill(Qt::red);
        QApplication::clipboard()->setImage(image);
    }
    QFileDialog* dialog() {
        while (!page.findChild<QFileDialog*>()) { // a look at where it is to begin comes first
            runLoop.waitForPosted();
            runLoop.runPosted();
        }
        return page.findChild<QFileDialog*>();
    }
    QAction* item(const QStringList& path) {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QAction* found = nullptr;
        for (const auto& text : path) {
            found = nullptr;
            for (auto* const each : menu ? menu->actions() : QList<QAction*>()) {
                found = each->text() == text ? each : found;
            }
            menu = found ? found->menu() : nullptr;
        }
        return found;
    }

    Opener opener;
};

TEST_F(AttachmentPageTest, FilesDroppedOnAnEntryAreCopiedIntoIt) {
    auto& todo = *add({"Renew passport"}).front();
    const int before = list().visualRect(page.entries().index(0, 0)).height();
    EXPECT_EQ(dropFiles({file("form.pdf"), file("photo.png")}, middleOf(todo)), Qt::CopyAction)
        << "never a move: the source would delete them";
    EXPECT_THAT(namesOf(todo), ElementsAre("form.pdf", "photo.png"));
    EXPECT_EQ(message(), "");
    EXPECT_GT(list().visualRect(page.entries().index(0, 0)).height(), before)
        << "the row shows them at once";
}

TEST_F(AttachmentPageTest, WhatCannotBeAttachedIsRefusedInWordsAndChangesNothing) {
    auto& todo = *add({"Renew passport"}).front();
    richtext::CharacterAttributes heading;
    heading.font = richtext::fontOf(richtext::HeadingLevel::level1);
    auto& title = own.entries.createText(
        {.rich = richtext::AttributedString(u"Trip", heading, {}), .board = *inbox, .now = kNow});
    const auto large = file("large.bin", std::string(10'485'761, 'x'));

    EXPECT_EQ(dropFiles({file("a.txt"), large}, middleOf(todo)), Qt::CopyAction);
    EXPECT_THAT(message(), HasSubstr("up to 10 MB each"));
    EXPECT_THAT(namesOf(todo), IsEmpty()) << "all of them or none";
    dropFiles({QString::fromStdString(folder.path().string())}, middleOf(todo));
    EXPECT_THAT(message(), HasSubstr("Folders cannot be attached"));
    dropFiles({file("a.txt")}, middleOf(title));
    EXPECT_THAT(message(), HasSubstr("Headings cannot have new attachments"));
    attach(todo, {"1", "2", "3"});
    dropFiles({file("a.txt")}, middleOf(todo));
    EXPECT_THAT(message(), HasSubstr("up to 3 files per entry"));
    EXPECT_THAT(namesOf(todo), ElementsAre("1", "2", "3"));

    EXPECT_EQ(dropFiles({file("a.txt")}, {100, viewport().height() - 5}), Qt::IgnoreAction)
        << "beside the entries";
    QMimeData link;
    link.setUrls({QUrl(QStringLiteral("https://korvex.dev/a.txt"))});
    EXPECT_EQ(drag(link, middleOf(todo)), Qt::CopyAction);
    EXPECT_THAT(namesOf(todo), ElementsAre("1", "2", "3")) << "no file of this computer";
    EXPECT_THAT(storedTexts(*inbox), ::testing::Contains("https://korvex.dev/a.txt"));
}

TEST_F(AttachmentPageTest, FilesAndPicturesArePastedOnTheCurrentEntry) {
    auto& todo = *add({"Renew passport"}).front();
    choose(todo);
    copyFiles({file("form.pdf")});
    key(Qt::Key_V, Qt::ControlModifier);
    copyPicture();
    key(Qt::Key_V, Qt::ControlModifier);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(namesOf(todo), ElementsAre("form.pdf", "Pasted image.png", "Pasted image 2.png"));
    EXPECT_FALSE(QImage::fromData(QByteArray::fromStdString([&] {
                     const auto kept = services::attachment(todo, idOf(todo, 1));
                     return std::string(kept->data.begin(), kept->data.end());
                 }()))
                     .isNull());
    QApplication::clipboard()->setText(QStringLiteral("only words"));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(namesOf(todo).size(), 3U);
}

TEST_F(AttachmentPageTest, ADraftAndItsFilesAreOneCreation) {
    page.startTodo();
    auto& field = page.findChild<TodoEditor*>()->field();
    QTest::keyClicks(&field, QStringLiteral("new"));
    copyFiles({file("a.txt")});
    field.paste();
    ASSERT_EQ(own.undo.undoActionName(), "New Todo");
    ASSERT_TRUE(page.leave());
    own.undo.undo();
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
    EXPECT_FALSE(own.undo.canUndo());
    own.undo.redo();
    ASSERT_THAT(storedTexts(*inbox), ElementsAre("new"));
    EXPECT_THAT(namesOf(*page.entries().entry(0)), ElementsAre("a.txt"));
}

TEST_F(AttachmentPageTest, AnEditorTakesWordsAsTextAndFilesAsAttachments) {
    page.startTodo();
    auto& field = page.findChild<TodoEditor*>()->field();
    copyFiles({file("form.pdf")});
    field.paste();
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
    EXPECT_EQ(tests::shownRefusal(page), QStringLiteral("Entry content cannot be empty."))
        << "a draft without words cannot hold a file yet";

    QTest::keyClicks(&field, QStringLiteral("Renew"));
    field.paste();
    ASSERT_THAT(storedTexts(*inbox), ElementsAre("Renew")) << "stored first";
    auto& entry = *services::activeEntries(*inbox).front();
    EXPECT_THAT(namesOf(entry), ElementsAre("form.pdf"));
    EXPECT_EQ(list().editedRow(), 0) << "writing goes on";
    clock.advance(1);
    field.paste();
    EXPECT_LE(page.findChild<TodoEditor*>()->geometry().bottom(), chip(entry, 1).top())
        << "the chips stand under the editor";

    auto* const both = new QMimeData;
    both->setText(QStringLiteral(" passport"));
    both->setImageData(QImage(4, 4, QImage::Format_RGB32));
    QApplication::clipboard()->setMimeData(both);
    field.paste();
    EXPECT_EQ(field.toPlainText(), QLatin1String("Renew passport"));
    EXPECT_EQ(namesOf(entry).size(), 2U);
}

TEST_F(AttachmentPageTest, ATextEditorTakesAPictureThatComesWithoutWords) {
    page.startText();
    auto& field = *page.findChild<RichTextEdit*>();
    QTest::keyClicks(&field, QStringLiteral("Notes"));
    auto* const fromBrowser = new QMimeData;
    fromBrowser->setHtml(QStringLiteral("<img src=\"https://korvex.dev/a.png\">"));
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::blue);
    fromBrowser->setImageData(image);
    QApplication::clipboard()->setMimeData(fromBrowser);
    field.paste();
    auto& entry = *services::activeEntries(*inbox).front();
    EXPECT_THAT(namesOf(entry), ElementsAre("Pasted image.png"));
    EXPECT_EQ(field.toPlainText(), QLatin1String("Notes"));
    EXPECT_EQ(dropFiles({file("a.txt")}, {5, 5}, field.viewport()), Qt::CopyAction)
        << "dropped on its words, which they do not become";
    EXPECT_EQ(field.toPlainText(), QLatin1String("Notes"));
    EXPECT_EQ(namesOf(entry).size(), 2U);
}

TEST_F(AttachmentPageTest, AChipOpensAsATemporaryCopy) {
    auto& todo = *add({"Renew passport"}).front();
    attach(todo, {"form.pdf", "photo.png"});
    QTest::mouseClick(&viewport(), Qt::LeftButton, {}, chip(todo, 1).center());
    EXPECT_THAT(opener.files, IsEmpty()) << "one click chooses";
    QTest::mouseDClick(&viewport(), Qt::LeftButton, {}, chip(todo, 1).center());
    key(Qt::Key_Left);
    key(Qt::Key_Return);
    ASSERT_EQ(opener.files.size(), 2U);
    EXPECT_EQ(opener.files[0].filename(), "photo.png");
    EXPECT_EQ(opener.files[1].filename(), "form.pdf");
    EXPECT_EQ(contentsOf(opener.files[1]), "form.pdf");
    EXPECT_EQ(list().editedRow(), -1) << "no editor was opened instead";
}

TEST_F(AttachmentPageTest, KeysWalkRemoveAndUndo) {
    auto& todo = *add({"Renew passport", "Other"}).front();
    attach(todo, {"a", "b", "c"});
    choose(todo);
    key(Qt::Key_Right);
    key(Qt::Key_Right);
    key(Qt::Key_Right, Qt::AltModifier);
    EXPECT_THAT(namesOf(todo), ElementsAre("a", "c", "b"));
    key(Qt::Key_Delete);
    EXPECT_THAT(namesOf(todo), ElementsAre("a", "c"));
    key(Qt::Key_Delete);
    EXPECT_THAT(namesOf(todo), ElementsAre("a")) << "the next one is chosen after a removal";
    EXPECT_TRUE(todo.isLive());
    own.undo.undo();
    own.undo.undo();
    EXPECT_THAT(namesOf(todo), ElementsAre("a", "c", "b"));
    key(Qt::Key_Escape);
    key(Qt::Key_Return);
    EXPECT_EQ(list().editedRow(), 0) << "back on the row its own keys work";
}

TEST_F(AttachmentPageTest, SavingWritesTheFileThatWasChosen) {
    auto& todo = *add({"Renew passport"}).front();
    attach(todo, {"form.pdf"});
    choose(todo);
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(&list(), &menu);
    auto* const save = item(
        {QStringLiteral("Attachments"), QStringLiteral("form.pdf"), QStringLiteral("Save as…")});
    ASSERT_TRUE(save) << "everything can be reached without a pointer";
    save->trigger();
    EXPECT_EQ(QFileInfo(dialog()->selectedFiles().value(0)).fileName(), QLatin1String("form.pdf"));
    const auto target = folder / "kept.pdf";
    Q_EMIT dialog()->filesSelected({QString::fromStdString(target.string())});
    EXPECT_EQ(contentsOf(target), "form.pdf");
    Q_EMIT dialog()->filesSelected({QStringLiteral("/proc/no/where.pdf")});
    EXPECT_THAT(message(), HasSubstr("“where.pdf” could not be saved"));
}

TEST_F(AttachmentPageTest, ChosenFilesAreAttached) {
    auto& todo = *add({"Renew passport"}).front();
    choose(todo);
    key(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    Q_EMIT dialog()->filesSelected({file("a.txt"), file("b.txt")});
    EXPECT_THAT(namesOf(todo), ElementsAre("a.txt", "b.txt"));
}

TEST_F(AttachmentPageTest, FilesChosenForADraftAreOneStepWithIt) {
    page.startTodo();
    const auto shortcut = [this] {
        QTest::keyClick(page.focusWidget(), Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    };
    shortcut();
    EXPECT_TRUE(threads.waitUntilEnded(std::chrono::seconds(10)));
    runLoop.runPosted();
    EXPECT_FALSE(page.findChild<QFileDialog*>()) << "nothing to attach them to";
    EXPECT_NE(tests::shownRefusal(page), QString());
    QTest::keyClicks(page.focusWidget(), QStringLiteral("Renew passport"));
    shortcut();
    auto* const chooser = dialog();
    ASSERT_TRUE(QTest::qWaitForWindowActive(chooser));
    EXPECT_THAT(storedTexts(*inbox), IsEmpty()) << "the user may choose none";
    Q_EMIT chooser->filesSelected({file("a.txt")});
    chooser->close();
    ASSERT_THAT(storedTexts(*inbox), ElementsAre("Renew passport"));
    EXPECT_THAT(namesOf(*services::activeEntries(*inbox).front()), ElementsAre("a.txt"));
    EXPECT_GE(list().editedRow(), 0) << "one goes on writing";
    own.undo.undo();
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
    own.undo.redo();
    EXPECT_THAT(namesOf(*services::activeEntries(*inbox).front()), ElementsAre("a.txt"));
}

TEST_F(AttachmentPageTest, ChipsMoveBetweenEntriesAndWithinOne) {
    const auto entries = add({"from", "to", "full"});
    auto& from = *entries[0];
    auto& to = *entries[1];
    auto& full = *entries[2];
    attach(from, {"x"});
    attach(to, {"a", "b"});
    attach(full, {"1", "2", "3"});
    moveChip(from, 0, chip(to, 1).center() - QPoint(5, 0));
    EXPECT_THAT(namesOf(from), IsEmpty());
    EXPECT_THAT(namesOf(to), ElementsAre("a", "x", "b")) << "before the chip under the pointer";
    moveChip(to, 0, chip(to, 2).center() + QPoint(5, 0));
    EXPECT_THAT(namesOf(to), ElementsAre("x", "b", "a"));
    EXPECT_EQ(moveChip(to, 0, chip(to, 0).center()), Qt::IgnoreAction) << "it is there already";
    moveChip(to, 0, middleOf(full));
    EXPECT_THAT(message(), HasSubstr("up to 3 files per entry"));
    EXPECT_THAT(namesOf(to), ElementsAre("x", "b", "a")) << "nothing is lost on the way";
    moveChip(to, 0, middleOf(from));
    EXPECT_THAT(namesOf(from), ElementsAre("x"));
    EXPECT_EQ(message(), "") << "what was refused is no news any more";
    own.undo.undo();
    EXPECT_THAT(namesOf(to), ElementsAre("x", "b", "a"));
    EXPECT_THAT(namesOf(from), IsEmpty());
}

TEST_F(AttachmentPageTest, WhatIsCopiedIsAFileForEveryOtherProgram) {
    const auto entries = add({"from", "to"});
    attach(*entries[0], {"form.pdf"});
    choose(*entries[0]);
    key(Qt::Key_Right);
    key(Qt::Key_C, Qt::ControlModifier);
    own.entries.removeAttachment(idOf(*entries[0], 0), *entries[0], clock.now());
    const auto* const copied = QApplication::clipboard()->mimeData();
    ASSERT_EQ(copied->urls().size(), 1);
    EXPECT_EQ(contentsOf(copied->urls().front().toLocalFile().toStdString()), "form.pdf");
    EXPECT_TRUE(copied->data(QStringLiteral("x-special/gnome-copied-files")).startsWith("copy\n"));
    choose(*entries[1]);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_THAT(namesOf(*entries[1]), ElementsAre("form.pdf"));
}

TEST_F(AttachmentPageTest, ACopyThatCannotBeWrittenIsToldOf) {
    auto& todo = *add({"Renew passport"}).front();
    attach(todo, {"form.pdf"});
    file("copies"); // where their folder would be
    choose(todo);
    key(Qt::Key_Right);
    key(Qt::Key_Return);
    EXPECT_THAT(opener.files, IsEmpty());
    EXPECT_THAT(message(), HasSubstr("“form.pdf” could not be written for another program: Not a"));
}

TEST_F(AttachmentPageTest, SpaceShowsAPictureAndMovingOnHidesIt) {
    auto& todo = *add({"Renew passport"}).front();
    choose(todo);
    copyPicture();
    key(Qt::Key_V, Qt::ControlModifier);
    attach(todo, {"fake.png"});
    key(Qt::Key_Right);
    key(Qt::Key_Space);
    const auto preview = [this] {
        return page.findChild<QWidget*>(QStringLiteral("attachmentPreview"));
    };
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview() != nullptr; }));
    EXPECT_TRUE(list().hasFocus());
    key(Qt::Key_Right);
    EXPECT_TRUE(QTest::qWaitFor([&] { return preview() == nullptr; }));
}

TEST_F(AttachmentPageTest, AnArchivedBoardsFilesAreOnlyLookedAt) {
    auto& board = own.boards.createBoard("Old", kNow);
    auto& todo = *own.entries.createTodos({.contents = {"a"}, .board = board, .now = kNow}).front();
    attach(todo, {"form.pdf"});
    own.boards.setArchived(true, board, kNow);
    page.showBoard(board);
    EXPECT_EQ(dropFiles({file("a.txt")}, middleOf(todo)), Qt::IgnoreAction);
    choose(todo);
    copyFiles({file("a.txt")});
    key(Qt::Key_V, Qt::ControlModifier);
    key(Qt::Key_Right);
    key(Qt::Key_Delete);
    EXPECT_THAT(namesOf(todo), ElementsAre("form.pdf"));
    key(Qt::Key_Return);
    EXPECT_EQ(opener.files.size(), 1U);
}

} // namespace
} // namespace korvex::ui

#include "AttachmentPageTest.moc"
