#pragma once

#include "base/Bytes.h"
#include "model/EntryAttachment.h"
#include "richtext/text/AttributedString.h"

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::cli {

class Session;

/// What standard input may hold; more is refused before memory runs out.
inline constexpr std::size_t kMaximumInputBytes = 64 * 1024 * 1024;

/// Everything up to the end of standard input. Throws CommandLineError (`refused`) when it cannot
/// be read or is longer than `kMaximumInputBytes`.
std::string readAll(int descriptor);

/// Standard input as one text, without the line break that ends it; read no further than an entry
/// may be long. Throws CommandLineError (`refused`) when it cannot be read or is not UTF-8,
/// EntryServiceError `contentTooLong`.
std::string readText(int descriptor);

/// The bytes of a file with formatted text; of one that is too long for an entry only so many that
/// this shows. Throws CommandLineError (`refused`) when it cannot be read.
base::Bytes readFormattedText(const std::string& file);

/// The files that are to be attached, read. Throws CommandLineError (`refused`) for one that is not
/// there or may not be read; for what else cannot be attached AttachmentError, and then says on
/// standard error which of several it is about.
std::vector<model::EntryAttachment> readFiles(const Session& session,
                                              std::span<const std::filesystem::path> files);

/// What was typed, as a text without formatting. Line breaks of other systems become line feeds,
/// the only ones that end a paragraph.
richtext::AttributedString plainText(std::string_view typed);

/// What was typed for something that has one line, such as the name of a board: its lines joined,
/// as a field of the windows takes them.
std::string oneLine(std::string_view typed);

} // namespace korvex::cli
