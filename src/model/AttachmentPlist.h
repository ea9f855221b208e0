#pragma once

#include "model/EntryAttachment.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The stored form of attachments, a binary property list: an array of dictionaries.
namespace korvex::model::attachmentPlist {

inline constexpr const char* kIdKey = "id";
inline constexpr const char* kFilenameKey = "filename";
inline constexpr const char* kDataKey = "data";

/// Reads no object but those that a list of attachments is made of, each of them at most once per
/// attachment: whatever bytes claim about themselves costs neither time nor memory. (A general
/// reader, libplist among them, builds all that is reachable: 361 bytes become gigabytes where
/// arrays share their members, and arrays inside each other overflow its stack.) Throws
/// AttachmentError for what is no such list; whether the attachments are allowed is for `validate`.
std::vector<EntryAttachment> read(std::span<const std::uint8_t> bytes);

} // namespace korvex::model::attachmentPlist
