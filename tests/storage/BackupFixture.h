#pragma once

#include "model/EntryAttachment.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/ServiceFixture.h"
#include "storage/BackupService.h"
#include "storage/StoreAdvice.h"
#include "support/FolderNames.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace korvex::storage {

namespace fs = std::filesystem;
using backup::BackupDocument;
using backup::BackupErrorCase;
using tests::namesIn;

/// A store with a few entries, exported and replaced.
class BackupFixture : public tests::ServiceFixture {
protected:
    void SetUp() override {
        ServiceFixture::SetUp();
        boards->initializeDefaultBoards(kNow);
        boards->reorderBoards(std::vector{boards->inboxBoard(), board}, kNow);
        const auto made = add({"one", "two", "three"});
        entries->completeTodo(*made[1], kNow);
        entries->attach({{.id = base::Uuid::random(),
                          .filename = "a.txt",
                          .data = base::Bytes(20'000, std::uint8_t{7})}},
                        *made[0], kNow);
        entries->createText(
            {.rich = richtext::RichTextSerializer::plainRichText("a \"text\"\nof two lines"),
             .board = *boards->inboxBoard(),
             .now = kNow});
    }

    void type(const char* text) {
        entries->createTodos({.contents = {text}, .board = *boards->inboxBoard(), .now = kNow});
    }
    BackupDocument stored() { return createBackup(*container, kNow, work).document; }
    BackupDocument inFile(const fs::path& file) { return readBackup(file, work); }
    /// Of another store; it has what a document can have.
    BackupDocument other() { return inFile(KORVEX_BACKUP_CASES "/valid/everything.korvexbackup"); }
    /// Both without what differs by the moment and the program.
    static void expectSameStore(BackupDocument left, const BackupDocument& right) {
        left.schemaVersion = right.schemaVersion;
        left.exportedAt = right.exportedAt;
        left.appVersion = right.appVersion;
        const auto byId = [](const auto& one, const auto& another) { return one.id < another.id; };
        auto sorted = right;
        for (auto* document : {&left, &sorted}) {
            std::sort(document->boards.begin(), document->boards.end(), byId);
            std::sort(document->entries.begin(), document->entries.end(), byId);
        }
        EXPECT_EQ(left, sorted);
    }
    BackupService service(store::ModelContext& of) { return {of, reminders, widgets, log}; }
    BackupService service() { return service(*context); }

    /// The error's text; "" when there is none.
    template <typename Work>
    static std::string refusal(Work&& attempt) {
        try {
            attempt();
            return "";
        } catch (const base::Error& error) {
            return error.errorDescription();
        }
    }
    /// The disk gives back another byte than was written into a file of this folder.
    static Work flippingIn(const fs::path& where) {
        return Work([where](const Progress& progress) {
            if (progress == Progress{.stage = Stage::verifying, .fraction = 0}) {
                for (const auto& each : fs::directory_iterator(where)) {
                    if (each.path().filename().native().find(".new-") != std::string::npos) {
                        std::fstream(each.path(), std::ios::in | std::ios::out).seekp(100) << '~';
                    }
                }
            }
        });
    }
    static constexpr const char* kNotGivenBack =
        "What was written of the backup is not what the disk gives back. It was not kept.";
    /// As a damaged store has it.
    void runSql(const char* statement) {
        SQLite::Database(container->configuration().file, SQLite::OPEN_READWRITE).exec(statement);
    }
    /// What no document may hold, and the way back.
    struct Unfit {
        const char* damage;
        const char* mending;
        BackupErrorCase error;
    };
    static constexpr std::array kUnfit{
        Unfit{"UPDATE Entry SET board = NULL WHERE content = 'three'",
              "UPDATE Entry SET board = (SELECT board FROM Entry WHERE content = 'two') WHERE "
              "content = 'three'",
              BackupErrorCase::incompleteRelationships},
        Unfit{"UPDATE Board SET name = ' ' WHERE name = 'Home'",
              "UPDATE Board SET name = 'Home' WHERE name = ' '", BackupErrorCase::invalidDocument}};
    static std::string textOf(BackupErrorCase which) { return descriptionOf(which); }
    /// The same where it is the store that no backup can be made of.
    std::string ofThisStore(BackupErrorCase which) {
        return textOf(which) + "\nWhat the store holds contradicts itself. This mends it: " +
               repairCommand(container->configuration().file);
    }

    fs::path out = folder / "out";
    fs::path target = out / "mine.korvexbackup";
    fs::path recovery = folder / "Korvex" / "Recovery" / "BeforeRestore.korvexbackup";
    Work work;
    fs::path pending = recovery.parent_path() / "BeforeUndo.korvexbackup";
};

} // namespace korvex::storage
