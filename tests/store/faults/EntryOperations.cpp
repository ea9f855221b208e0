#include "store/faults/Operations.h"

#include "backup/BackupDocument.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/AttachmentList.h"
#include "services/EntryOrder.h"

namespace korvex::faults {

namespace {

richtext::AttributedString plain(std::string_view text) {
    return richtext::RichTextSerializer::plainRichText(text);
}

/// Larger than a page of the store.
model::EntryAttachment attachment(std::string filename) {
    return {.id = base::Uuid::random(),
            .filename = std::move(filename),
            .data = base::Bytes(20'000, std::uint8_t{'x'})};
}

/// In front, so that every other entry is renumbered.
void create(Program& program) {
    program.entries().createTodos({.contents = {"new", std::string(9000, 'x')},
                                   .board = program.inbox(),
                                   .before = program.todos().front()->id(),
                                   .now = kLater});
}

/// As a second program does it, whatever the store holds by then.
void add(Program& program) {
    program.entries().createTodos({.contents = {"added"}, .board = program.inbox(), .now = kLater});
}

void complete(Program& program) {
    program.entries().completeTodo(*program.todos().at(1), kLater);
}

void reorder(Program& program) {
    const auto todos = program.todos();
    program.entries().moveEntry(todos.back()->id(), todos.front()->id(),
                                model::EntryPlacement::before, program.inbox());
}

/// One entry changes, one is new, and those behind them are renumbered.
void split(Program& program) {
    model::Entry& text = *services::activeEntries(program.inbox()).at(1);
    program.entries().splitText(text, plain("a text"), plain("of two halves"), kLater);
}

/// A completed todo leaves its place among the others.
void changeType(Program& program) {
    model::Entry& todo = *services::completedTodos(program.inbox()).front();
    program.entries().changeType(todo, model::EntryType::text, kLater);
}

void remove(Program& program) {
    program.entries().deleteEntry(*program.todos().front());
}

void attach(Program& program) {
    program.entries().attach({attachment("a"), attachment("b")}, *program.todos().front(), kLater);
}

/// Two entries change.
void moveAttachment(Program& program) {
    model::Entry& from = *program.todos().back();
    const auto attached = services::attachmentsOf(from).attachments;
    program.entries().moveAttachment(attached.at(0).id, from, *program.todos().front(),
                                     std::nullopt, model::EntryPlacement::after, kLater);
}

/// Two boards are renumbered.
void moveToBoard(Program& program) {
    program.entries().moveEntry(*program.todos().front(), *program.boards().boards().back(), kLater,
                                0);
}

void completeAll(Program& program) {
    program.entries().completeTodos(program.inbox(), kLater);
}

/// As undoing a deletion does.
void restoreDeleted(Program& program) {
    auto record = backup::recordOf(*program.todos().front(), program.inbox().id());
    record.id = base::Uuid::random();
    record.content = "deleted before";
    program.entries().restoreDeletedEntry(record);
}

/// A unit of work by hand: changed, inserted and deleted records in one save, which stay pending
/// until a save succeeds. The services take back what they could not save.
void save(Program& program) {
    store::ModelContext& context = *program.context;
    if (!context.hasChanges()) {
        const auto todos = program.todos();
        todos.front()->setContent("changed");
        auto fresh = std::make_unique<model::Entry>(
            model::EntryFields{.id = base::Uuid::random(),
                               .content = "inserted",
                               .createdAt = kLater,
                               .updatedAt = kLater,
                               .sortOrder = todos.back()->sortOrder()});
        fresh->setBoard(&program.inbox());
        context.insert(std::move(fresh));
        context.remove(*todos.back());
    }
    context.save();
}

void checkpoint(Program& program) {
    program.container->checkpoint();
}

void createStore(Program& program) {
    program.boards().initializeDefaultBoards(kNow);
}

void prepare(Program& program) {
    std::filesystem::create_directory(program.exportedFile().parent_path());
    createStore(program);
    program.boards().createBoard("Work", kNow);
    std::vector<std::string> contents;
    for (int i = 0; i < kPreparedTodos; ++i) {
        contents.push_back("todo " + std::to_string(i));
    }
    program.entries().createTodos({.contents = contents, .board = program.inbox(), .now = kNow});
    program.entries().completeTodo(*program.todos().at(3), kNow);
    program.entries().attach({attachment("first"), attachment("second")}, *program.todos().back(),
                             kNow);
    program.entries().createText({.rich = plain("a text of two halves"),
                                  .board = program.inbox(),
                                  .before = program.todos().at(1)->id(),
                                  .now = kNow});
}

} // namespace

const Operations& entryOperations() {
    static const Operations all{
        {"create-store", createStore},
        {"prepare", prepare},
        {"add", add},
        {"create", create},
        {"complete", complete},
        {"reorder", reorder},
        {"split", split},
        {"type", changeType},
        {"delete", remove},
        {"attach", attach},
        {"move-attachment", moveAttachment},
        {"move-board", moveToBoard},
        {"complete-all", completeAll},
        {"restore-deleted", restoreDeleted},
        {"save", save},
        {"checkpoint", checkpoint},
    };
    return all;
}

} // namespace korvex::faults
