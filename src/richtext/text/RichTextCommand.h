#pragma once

#include "richtext/text/HeadingLevel.h"

#include <optional>
#include <string>
#include <variant>

namespace korvex::richtext {

/// What the controls of an editor ask it to do with the selection.
struct RichTextAction {
    enum class Kind {
        heading,
        codeLanguage,
        codeBlock,
        table,
        link,
        normalText,
        bold,
        italic,
        underline,
        strikethrough,
        code,
        lists,
        tableRow,
        tableColumn,
        deleteTable,
    };

    Kind kind;
    /// What the kind needs to know: `heading` the level, or none for normal text; `codeLanguage`
    /// the language's identifier.
    std::variant<std::monostate, HeadingLevel, std::string> value = {};

    static RichTextAction heading(std::optional<HeadingLevel> level) {
        RichTextAction action{Kind::heading};
        if (level) {
            action.value = *level;
        }
        return action;
    }
    static RichTextAction codeLanguage(std::string id) {
        return {Kind::codeLanguage, std::move(id)};
    }
    std::optional<HeadingLevel> headingLevel() const {
        const auto* const level = std::get_if<HeadingLevel>(&value);
        return level ? std::optional(*level) : std::nullopt;
    }
    std::string languageId() const {
        const auto* const id = std::get_if<std::string>(&value);
        return id ? *id : std::string();
    }

    bool operator==(const RichTextAction&) const = default;
};

struct RichTextCommand {
    RichTextAction action;

    bool operator==(const RichTextCommand&) const = default;
};

} // namespace korvex::richtext
