#include "model/AttachmentPlist.h"

#include "base/Utf16.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::model::attachmentPlist {

namespace {

/// What may stand beside the files' bytes: names, keys, offsets.
constexpr std::size_t kMaximumOverhead = 64 * 1024;

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerBytes = 32;
/// Other programs' lists may say more of an attachment than is read here.
constexpr std::size_t kMaximumMembers = 32;

/// The upper half of an object's first byte.
enum Kind : std::uint8_t {
    integerKind = 0x1,
    dataKind = 0x4,
    asciiKind = 0x5,
    utf16Kind = 0x6,
    arrayKind = 0xA,
    dictionaryKind = 0xD,
};
/// In the lower half: the count did not fit there and follows as an integer.
constexpr std::uint8_t kCountFollows = 0xF;

[[noreturn]] void refuse() {
    throw AttachmentError(AttachmentErrorCase::invalidData);
}

void require(bool holds) {
    if (!holds) {
        refuse();
    }
}

/// Most significant byte first; at most eight of them count.
std::uint64_t bigEndian(std::span<const std::uint8_t> bytes) {
    std::uint64_t value = 0;
    for (const auto byte : bytes) {
        value = value << 8U | byte;
    }
    return value;
}

/// Unpaired surrogates have no UTF-8: a name that holds one would come back as another name.
bool isWellFormed(std::u16string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto unit = text[i] & 0xFC00;
        if (unit == 0xDC00) {
            return false;
        }
        if (unit == 0xD800 && (++i == text.size() || (text[i] & 0xFC00) != 0xDC00)) {
            return false;
        }
    }
    return true;
}

/// The objects of a binary property list, by their numbers. References are followed only when
/// somebody asks.
class ObjectTable {
public:
    using Reference = std::uint64_t;
    struct Members {
        std::vector<Reference> keys;
        std::vector<Reference> values;
    };

    explicit ObjectTable(std::span<const std::uint8_t> bytes) {
        require(bytes.size() > kMagic.size() + kTrailerBytes &&
                std::equal(kMagic.begin(), kMagic.end(), bytes.begin()));
        const auto trailer = bytes.last(kTrailerBytes);
        m_offsetBytes = trailer[6];
        m_referenceBytes = trailer[7];
        m_count = bigEndian(trailer.subspan(8, 8));
        m_root = bigEndian(trailer.subspan(16, 8));
        const auto table = bigEndian(trailer.subspan(24, 8));
        require(m_offsetBytes >= 1 && m_offsetBytes <= 8 && m_referenceBytes >= 1 &&
                m_referenceBytes <= 8);
        const auto end = bytes.size() - kTrailerBytes;
        require(table >= kMagic.size() && table <= end);
        require(m_count >= 1 && m_count <= (end - table) / m_offsetBytes);
        m_objects = bytes.first(static_cast<std::size_t>(table));
        m_offsets = bytes.subspan(static_cast<std::size_t>(table),
                                  static_cast<std::size_t>(m_count) * m_offsetBytes);
    }

    Reference root() const { return m_root; }

    std::vector<Reference> array(Reference which, std::size_t maximum) const {
        const auto object = header(which);
        require(object.kind == arrayKind && object.count <= maximum);
        return references(object, 0);
    }

    Members dictionary(Reference which) const {
        const auto object = header(which);
        require(object.kind == dictionaryKind && object.count <= kMaximumMembers);
        return {.keys = references(object, 0), .values = references(object, 1)};
    }

    std::span<const std::uint8_t> data(Reference which, std::size_t maximum) const {
        const auto object = header(which);
        require(object.kind == dataKind && object.count <= maximum);
        return content(object, object.count);
    }

    /// In UTF-8; `maximum` counts the units of its stored form.
    std::string string(Reference which, std::size_t maximum) const {
        const auto object = header(which);
        require(object.count <= maximum);
        if (object.kind == asciiKind) {
            const auto bytes = content(object, object.count);
            require(std::all_of(bytes.begin(), bytes.end(),
                                [](std::uint8_t byte) { return byte < 0x80; }));
            return {bytes.begin(), bytes.end()};
        }
        require(object.kind == utf16Kind);
        const auto bytes = content(object, object.count * 2);
        std::u16string units;
        for (std::size_t i = 0; i < bytes.size(); i += 2) {
            units += static_cast<char16_t>(bigEndian(bytes.subspan(i, 2)));
        }
        require(isWellFormed(units));
        return base::utf8(units);
    }

private:
    struct Header {
        std::uint8_t kind;
        std::uint64_t count;
        /// Where what is counted begins.
        std::size_t start;
    };

    std::span<const std::uint8_t> slice(std::uint64_t start, std::uint64_t length) const {
        require(start <= m_objects.size() && length <= m_objects.size() - start);
        return m_objects.subspan(static_cast<std::size_t>(start), static_cast<std::size_t>(length));
    }

    std::span<const std::uint8_t> content(const Header& object, std::uint64_t length) const {
        return slice(object.start, length);
    }

    Header header(Reference which) const {
        require(which < m_count);
        const auto offset = bigEndian(
            m_offsets.subspan(static_cast<std::size_t>(which) * m_offsetBytes, m_offsetBytes));
        require(offset >= kMagic.size());
        const auto first = slice(offset, 1).front();
        Header object{.kind = static_cast<std::uint8_t>(first >> 4U),
                      .count = static_cast<std::uint8_t>(first & 0xFU),
                      .start = static_cast<std::size_t>(offset) + 1};
        if (object.count == kCountFollows) {
            const auto integer = slice(object.start, 1).front();
            require(integer >> 4U == integerKind && (integer & 0xFU) <= 3);
            const auto width = std::size_t{1} << (integer & 0xFU);
            object.count = bigEndian(slice(object.start + 1, width));
            object.start += 1 + width;
        }
        return object;
    }

    /// The object's `part`-th row of as many references as it counts.
    std::vector<Reference> references(const Header& object, std::size_t part) const {
        const auto length = object.count * m_referenceBytes;
        const auto bytes = slice(object.start + part * length, length);
        std::vector<Reference> found;
        for (std::size_t i = 0; i < bytes.size(); i += m_referenceBytes) {
            found.push_back(bigEndian(bytes.subspan(i, m_referenceBytes)));
        }
        return found;
    }

    std::span<const std::uint8_t> m_objects;
    std::span<const std::uint8_t> m_offsets;
    std::size_t m_offsetBytes = 0;
    std::size_t m_referenceBytes = 0;
    std::uint64_t m_count = 0;
    Reference m_root = 0;
};

EntryAttachment attachment(const ObjectTable& objects, ObjectTable::Reference which) {
    constexpr std::size_t kLongestKey = 64;
    const auto members = objects.dictionary(which);
    std::optional<ObjectTable::Reference> id;
    std::optional<ObjectTable::Reference> filename;
    std::optional<ObjectTable::Reference> data;
    for (std::size_t i = 0; i < members.keys.size(); ++i) {
        const auto key = objects.string(members.keys[i], kLongestKey);
        auto* known = key == kIdKey         ? &id
                      : key == kFilenameKey ? &filename
                      : key == kDataKey     ? &data
                                            : nullptr;
        if (known) {
            require(!known->has_value());
            *known = members.values[i];
        }
    }
    require(id && filename && data);
    const auto identifier = base::Uuid::parse(objects.string(*id, kLongestKey));
    require(identifier.has_value());
    const auto bytes = objects.data(*data, EntryAttachment::kMaximumBytes);
    return {.id = *identifier,
            .filename = objects.string(*filename, EntryAttachment::kMaximumFilenameBytes),
            .data = {bytes.begin(), bytes.end()}};
}

} // namespace

std::vector<EntryAttachment> read(std::span<const std::uint8_t> bytes) {
    require(bytes.size() <= EntryAttachment::kMaximumTotalBytes + kMaximumOverhead);
    const ObjectTable objects(bytes);
    std::vector<EntryAttachment> attachments;
    for (const auto each : objects.array(objects.root(), EntryAttachment::kMaximumCount)) {
        attachments.push_back(attachment(objects, each));
    }
    return attachments;
}

} // namespace korvex::model::attachmentPlist
