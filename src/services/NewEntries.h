#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/Board.h"
#include "model/EntryAttachment.h"
#include "model/TodoSchedule.h"
#include "richtext/text/AttributedString.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::services {

struct EditingSession;

/// What `EntryService::createTodos` makes: one open todo per element of `contents`.
struct NewTodos {
    std::vector<std::string> contents;
    model::Board& board;
    std::optional<base::Uuid> after = std::nullopt;
    /// Decides when both are given; with neither the todos go to the end.
    std::optional<base::Uuid> before = std::nullopt;
    base::Instant now;
    model::TodoSchedule schedule = {};
    /// The files of a single todo; with several contents the batch is refused (`multipleTodos`).
    std::vector<model::EntryAttachment> attachments = {};
    /// What the user calls the creation, a literal; then it can be undone under that name. Without
    /// one it registers no undo.
    std::string_view undoName = {};
    /// With a name and of a single todo: its creation is a part of this editing.
    EditingSession* session = nullptr;
};

/// What `EntryService::createText` makes: one text entry.
struct NewText {
    richtext::AttributedString rich;
    model::Board& board;
    std::optional<base::Uuid> after = std::nullopt;
    /// Decides when both are given; with neither the entry goes to the end.
    std::optional<base::Uuid> before = std::nullopt;
    base::Instant now;
    /// None on a heading (`headingAttachments`).
    std::vector<model::EntryAttachment> attachments = {};
    /// As of todos.
    std::string_view undoName = {};
    EditingSession* session = nullptr;
};

} // namespace korvex::services
