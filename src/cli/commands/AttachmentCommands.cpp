#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/AttachmentText.h"
#include "cli/output/EntryOutput.h"
#include "cli/output/Json.h"
#include "cli/session/Input.h"
#include "cli/session/Lookup.h"
#include "cli/session/Session.h"

#include <algorithm>

namespace korvex::cli {

namespace {

struct AttachOptions {
    std::string entry;
    std::vector<std::string> files;
};

struct DetachOptions {
    std::string entry;
    std::string attachment;
};

struct AttachmentsOptions {
    std::string entry;
    std::optional<std::string> folder;
};

struct MoveAttachmentOptions {
    std::string attachment;
    std::string from;
    std::string to;
    std::optional<std::string> before;
    std::optional<std::string> after;
};

ExitStatus attach(Session& session, const AttachOptions& options) {
    auto& entry = findEntry(session, options.entry);
    const std::vector<std::filesystem::path> files(options.files.begin(), options.files.end());
    std::vector<base::Uuid> attached;
    session.entries().attachFiles(files, entry, session.now(), [&](const auto& paths) {
        auto attachments = readFiles(session, paths);
        for (const auto& each : attachments) {
            attached.push_back(each.id);
        }
        return attachments;
    });
    if (session.wantsJson()) {
        printRecord(session, entry);
        return ExitStatus::done;
    }
    for (const auto& id : attached) {
        session.output().write(id.text());
        session.output().put('\n');
    }
    return ExitStatus::done;
}

ExitStatus detach(Session& session, const DetachOptions& options) {
    const store::LockedStep step(session.context());
    auto& entry = findEntry(session, options.entry);
    session.entries().removeAttachment(findAttachment(entry, options.attachment), entry,
                                       session.now());
    printRecord(session, entry);
    return ExitStatus::done;
}

services::AttachmentList readableAttachments(const model::Entry& entry) {
    auto list = services::attachmentsOf(entry);
    if (list.isDamaged) {
        throw model::AttachmentError(model::AttachmentErrorCase::invalidData);
    }
    return list;
}

/// All of them, or none stay.
std::vector<std::filesystem::path>
save(const model::Entry& entry, const services::AttachmentList& list, const std::string& folder) {
    // Read before the first is written: then nothing but writing can fail half way.
    std::vector<model::EntryAttachment> attachments;
    for (const auto& each : list.attachments) {
        auto attachment = services::attachment(entry, each.id);
        if (!attachment) {
            throw refusal(each.filename + " was detached meanwhile. Nothing was saved.");
        }
        attachments.push_back(std::move(*attachment));
    }
    std::vector<std::filesystem::path> saved;
    try {
        for (const auto& each : attachments) {
            saved.push_back(services::saveAttachment(each, folder));
        }
    } catch (const std::filesystem::filesystem_error& error) {
        std::error_code ignored;
        for (const auto& file : saved) {
            std::filesystem::remove(file, ignored);
        }
        throw refusal(error.path1().string() + " could not be written: " + error.code().message() +
                      ". Nothing was saved.");
    }
    return saved;
}

ExitStatus attachments(Session& session, const AttachmentsOptions& options) {
    const auto& entry = findEntry(session, options.entry);
    const auto list = readableAttachments(entry);
    if (!options.folder) {
        if (session.wantsJson()) {
            Json json(session.output());
            writeAttachments(json, list);
        } else {
            printAttachments(session, list);
        }
        return ExitStatus::done;
    }
    const auto saved = save(entry, list, *options.folder);
    if (session.wantsJson()) {
        Json json(session.output());
        json.beginArray();
        for (const auto& file : saved) {
            json.text(file.string());
        }
        json.endArray();
        return ExitStatus::done;
    }
    for (const auto& file : saved) {
        session.output().write(file.string());
        session.output().put('\n');
    }
    return ExitStatus::done;
}

ExitStatus moveAttachment(Session& session, const MoveAttachmentOptions& options) {
    const store::LockedStep step(session.context());
    auto& from = findEntry(session, options.from);
    auto& to = findEntry(session, options.to);
    const auto id = findAttachment(from, options.attachment);
    const auto& beside = options.before ? options.before : options.after;
    const auto relativeTo = beside ? std::optional(findAttachment(to, *beside)) : std::nullopt;
    session.entries().moveAttachment(id, from, to, relativeTo,
                                     options.before ? model::EntryPlacement::before
                                                    : model::EntryPlacement::after,
                                     session.now());
    std::vector<model::Entry*> changed{&from};
    if (&to != &from) {
        changed.push_back(&to);
    }
    printRecords(session, changed);
    return ExitStatus::done;
}

} // namespace

void addAttachmentCommands(CLI::App& program, Action& chosen) {
    const auto attached =
        addCommand(program, "attach", "Attaches files to an entry and prints their identifiers",
                   chosen, attach);
    addText(attached.parser, "ID", "ID", attached.options->entry, kEntryHelp)->required();
    addFiles(attached.parser, "FILE", attached.options->files,
             "A regular file of up to 10 MB; an entry holds up to three");

    const auto detached =
        addCommand(program, "detach", "Removes an attachment of an entry", chosen, detach);
    addText(detached.parser, "ID", "ID", detached.options->entry, kEntryHelp)->required();
    addText(detached.parser, "ATTACHMENT", "ATTACHMENT", detached.options->attachment,
            kAttachmentHelp)
        ->required();

    const auto listed =
        addCommand(program, "attachments", "Lists the attachments of an entry, or saves them",
                   chosen, attachments);
    addText(listed.parser, "ID", "ID", listed.options->entry, kEntryHelp)->required();
    addText(listed.parser, "--save", "DIR", listed.options->folder,
            "Saves all of them into this folder and prints the files' paths; where a name is taken "
            "the next free one is used: \"plan 2.pdf\"");

    const auto moved =
        addCommand(program, "move-attachment", "Moves an attachment to another entry or place",
                   chosen, moveAttachment);
    addText(moved.parser, "ATTACHMENT", "ATTACHMENT", moved.options->attachment, kAttachmentHelp)
        ->required();
    addText(moved.parser, "--from", "ID", moved.options->from, "The entry that has it")->required();
    addText(moved.parser, "--to", "ID", moved.options->to,
            "The entry that gets it, which may be the same")
        ->required();
    auto* before = addText(moved.parser, "--before", "ATTACHMENT", moved.options->before,
                           "Directly before this attachment, instead of at the end");
    addText(moved.parser, "--after", "ATTACHMENT", moved.options->after,
            "Directly after this attachment")
        ->excludes(before);
}

} // namespace korvex::cli
