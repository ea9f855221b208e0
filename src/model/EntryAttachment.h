#pragma once

#include "base/Bytes.h"
#include "base/Error.h"
#include "base/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::model {

enum class AttachmentErrorCase { invalidFile, tooLarge, invalidData, multipleTodos };
std::string descriptionOf(AttachmentErrorCase which);
std::string domainOf(AttachmentErrorCase which);
using AttachmentError = base::TypedError<AttachmentErrorCase>;

/// A file attached to an entry. A plain value that can hold anything; `validate` says whether an
/// entry may hold it.
struct EntryAttachment {
    static constexpr std::size_t kMaximumCount = 3;
    static constexpr std::size_t kMaximumBytes = 10'485'760;
    static constexpr std::size_t kMaximumTotalBytes = 31'457'280;
    /// The limit is more than any file system's names have.
    static constexpr std::size_t kMaximumFilenameBytes = 1024;

    base::Uuid id;
    /// UTF-8; the last component of the file's path.
    std::string filename;
    base::Bytes data;

    bool operator==(const EntryAttachment&) const = default;

    /// Whether a name is not empty, not "." or "..", without slash, backslash, colon and NUL.
    /// UTF-8, since the stored form knows no other text, of at most `kMaximumFilenameBytes`.
    static bool isValidFilename(std::string_view filename);
    /// Throws the AttachmentError of the first rule that the list breaks: count, identifiers,
    /// names, each one's size, the size of all.
    static void validate(std::span<const EntryAttachment> attachments);

    /// The stored form, a binary property list, of a list that `validate` accepts; absent for an
    /// empty one.
    static std::optional<base::Bytes> encode(std::span<const EntryAttachment> attachments);
    /// Reads what `encode` writes. Absent or empty data is an empty list; throws `invalidData` for
    /// whatever is not a list that `encode` accepts, however damaged or hostile.
    static std::vector<EntryAttachment> decode(std::span<const std::uint8_t> data);
    static std::vector<EntryAttachment> decode(const base::Bytes& data) {
        return decode(std::span(data));
    }
    static std::vector<EntryAttachment> decode(const std::optional<base::Bytes>& data) {
        return data ? decode(*data) : std::vector<EntryAttachment>();
    }
};

} // namespace korvex::model
