#include "backup/BackupFields.h"
#include "backup/BackupFileIO.h"
#include "backup/JsonStream.h"

#include "base/Base64.h"
#include "base/Text.h"

#include <rapidjson/reader.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <charconv>
#include <optional>
#include <type_traits>

namespace korvex::backup::BackupFileIO {

namespace {

/// What stands under an unknown key may be nested, but not without end.
constexpr std::size_t kMaximumDepth = 512;

struct Scalar {
    enum class Kind { null, boolean, number, text };
    Kind kind = Kind::null;
    bool boolean = false;
    /// Of a number as it stands, of a text without its escapes.
    std::string_view text = {};
};

// Each says whether the scalar is a value of that type.

template <typename Number>
bool readNumber(const Scalar& scalar, Number& number) {
    const auto* const end = scalar.text.data() + scalar.text.size();
    const auto [stop, error] = std::from_chars(scalar.text.data(), end, number);
    return scalar.kind == Scalar::Kind::number && error == std::errc() && stop == end;
}
bool read(const Scalar& scalar, std::int64_t& integer) {
    return readNumber(scalar, integer);
}
bool read(const Scalar& scalar, base::Instant& instant) {
    return readNumber(scalar, instant.seconds);
}
bool read(const Scalar& scalar, bool& boolean) {
    boolean = scalar.boolean;
    return scalar.kind == Scalar::Kind::boolean;
}
bool read(const Scalar& scalar, std::string& text) {
    text = scalar.text;
    return scalar.kind == Scalar::Kind::text;
}
bool read(const Scalar& scalar, base::Uuid& id) {
    const auto parsed = base::Uuid::parse(scalar.text);
    id = parsed.value_or(id);
    return scalar.kind == Scalar::Kind::text && parsed.has_value();
}
bool read(const Scalar& scalar, base::Bytes& bytes) {
    auto decoded = base::bytesOfBase64(scalar.text);
    const auto isRead = scalar.kind == Scalar::Kind::text && decoded.has_value();
    if (isRead) {
        bytes = std::move(*decoded);
    }
    return isRead;
}
template <typename Value>
bool read(const Scalar& scalar, std::optional<Value>& optional) {
    return scalar.kind == Scalar::Kind::null || read(scalar, optional.emplace());
}
template <typename Record>
bool read(const Scalar&, std::vector<Record>&) {
    return false; // an array is no scalar
}

template <typename Value>
struct IsOptional : std::false_type {};
template <typename Value>
struct IsOptional<std::optional<Value>> : std::true_type {};

template <typename Record>
struct FieldReader {
    std::string_view key;
    bool isRequired;
    bool (*read)(const Scalar&, Record&);
};

template <typename Record, std::size_t Index>
constexpr FieldReader<Record> fieldReader() {
    constexpr auto field = std::get<Index>(kFields<Record>);
    using Value = std::remove_cvref_t<decltype(std::declval<Record>().*field.member)>;
    return {field.key, !IsOptional<Value>::value, [](const Scalar& scalar, Record& record) {
                return read(scalar, record.*std::get<Index>(kFields<Record>).member);
            }};
}

/// `kFields` as a table to search in.
template <typename Record>
constexpr auto kFieldReaders = []<std::size_t... Indices>(std::index_sequence<Indices...>) {
    return std::array{fieldReader<Record, Indices>()...};
}
(std::make_index_sequence<kFieldCount<Record>>());

/// An object while it is read: which keys have come, and which one last.
template <typename Record>
class OpenObject {
public:
    explicit OpenObject(Record* record = nullptr) : m_record(record) {}

    /// False for one that has come already: nobody can tell which of its values is meant.
    bool key(std::string_view key) {
        const auto& readers = kFieldReaders<Record>;
        const auto isKey = [key](const FieldReader<Record>& reader) { return reader.key == key; };
        // Written in order, the next one is not far.
        const auto next = m_place < readers.size() ? readers.begin() + m_place : readers.begin();
        auto found = std::find_if(next, readers.end(), isKey);
        if (found == readers.end()) {
            found = std::find_if(readers.begin(), next, isKey);
            found = found == next ? readers.end() : found;
        }
        m_place = static_cast<std::size_t>(found - readers.begin());
        if (isAtUnknownKey()) {
            return true;
        }
        const auto isFirst = !m_seen[m_place];
        m_seen.set(m_place);
        return isFirst;
    }
    bool isAtUnknownKey() const { return m_place == kFieldCount<Record>; }
    bool isAt(std::string_view key) const {
        return !isAtUnknownKey() && kFieldReaders<Record>[m_place].key == key;
    }
    bool scalar(const Scalar& scalar) const {
        return isAtUnknownKey() || kFieldReaders<Record>[m_place].read(scalar, *m_record);
    }
    bool hasAllRequired() const {
        for (std::size_t place = 0; place < kFieldCount<Record>; ++place) {
            if (kFieldReaders<Record>[place].isRequired && !m_seen[place]) {
                return false;
            }
        }
        return true;
    }

private:
    Record* m_record;
    std::size_t m_place = 0;
    std::bitset<kFieldCount<Record>> m_seen;
};

/// Whether the records that come are those of a document, in its order.
class Comparison {
public:
    explicit Comparison(const BackupDocument& meant) : m_meant(meant) {}

    bool take(const BackupDocument::BoardRecord& board) {
        return isNext(board, m_meant.boards, m_boards);
    }
    bool take(const BackupDocument::EntryRecord& entry) {
        return isNext(entry, m_meant.entries, m_entries);
    }
    /// With all of them taken, and the rest of what was read.
    bool isWhole(const BackupDocument& read) const {
        return m_boards == m_meant.boards.size() && m_entries == m_meant.entries.size() &&
               read.schemaVersion == m_meant.schemaVersion &&
               read.exportedAt == m_meant.exportedAt && read.appVersion == m_meant.appVersion;
    }

private:
    template <typename Record>
    static bool isNext(const Record& record, const std::vector<Record>& meant, std::size_t& place) {
        const auto isSame = place < meant.size() && record == meant[place];
        ++place;
        return isSame;
    }

    const BackupDocument& m_meant;
    std::size_t m_boards = 0;
    std::size_t m_entries = 0;
};

/// Takes what RapidJSON's reader meets, under the names that it calls; false ends the reading.
class DocumentHandler {
public:
    using Ch = char;

    /// With a comparison, each record goes there and not into the document; the first one that
    /// differs ends the reading. `advance` may be empty.
    DocumentHandler(BackupDocument& document, const JsonStream& stream, std::size_t byteCount,
                    const Advance& advance, Comparison* comparison = nullptr)
        : m_document(document),
          m_stream(stream),
          m_byteCount(byteCount),
          m_advance(advance),
          m_comparison(comparison),
          m_top(&document) {}

    bool Null() { return scalar({Scalar::Kind::null}); }
    bool Bool(bool boolean) { return scalar({Scalar::Kind::boolean, boolean}); }
    bool RawNumber(const Ch*, rapidjson::SizeType length, bool) {
        return scalar({Scalar::Kind::number, false, m_stream.last(length)});
    }
    bool String(const Ch*, rapidjson::SizeType, bool) {
        const auto text = m_stream.string();
        // All bytes are UTF-8; half of a surrogate pair that is escaped is not.
        return (!m_stream.hasEscapes() || base::isValidUtf8(text)) &&
               scalar({Scalar::Kind::text, false, text});
    }
    // Numbers are taken as they stand.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }

    bool Key(const Ch*, rapidjson::SizeType, bool) {
        const auto key = m_stream.string();
        switch (m_place) {
        case Place::document:
            return m_top.key(key);
        case Place::board:
            return m_board.key(key);
        case Place::entry:
            return m_entry.key(key);
        case Place::outside:
        case Place::boards:
        case Place::entries:
        case Place::unknown:
            break;
        }
        return true;
    }

    bool StartObject() {
        switch (m_place) {
        case Place::outside:
            return enter(Place::document);
        case Place::boards:
            m_board = OpenObject(&added(m_document.boards));
            return enter(Place::board);
        case Place::entries:
            m_entry = OpenObject(&added(m_document.entries));
            return enter(Place::entry);
        case Place::document:
        case Place::board:
        case Place::entry:
        case Place::unknown:
            break;
        }
        return isAtUnknown() && enter(Place::unknown);
    }
    bool EndObject(rapidjson::SizeType) {
        const auto isRight = m_place == Place::document ? m_top.hasAllRequired()
                             : m_place == Place::board  ? isRecord(m_board, m_document.boards)
                             : m_place == Place::entry  ? isRecord(m_entry, m_document.entries)
                                                        : true;
        leave();
        return isRight;
    }
    bool StartArray() {
        if (m_place == Place::document && m_top.isAt("boards")) {
            return enter(Place::boards);
        }
        if (m_place == Place::document && m_top.isAt("entries")) {
            return enter(Place::entries);
        }
        return isAtUnknown() && enter(Place::unknown);
    }
    bool EndArray(rapidjson::SizeType) {
        leave();
        return true;
    }

private:
    enum class Place { outside, document, boards, board, entries, entry, unknown };

    bool scalar(const Scalar& scalar) {
        switch (m_place) {
        case Place::document:
            return m_top.scalar(scalar);
        case Place::board:
            return m_board.scalar(scalar);
        case Place::entry:
            return m_entry.scalar(scalar);
        case Place::unknown:
            return true;
        case Place::outside:
        case Place::boards:
        case Place::entries:
            break;
        }
        return false;
    }

    bool isAtUnknown() const {
        return m_place == Place::unknown ||
               (m_place == Place::document && m_top.isAtUnknownKey()) ||
               (m_place == Place::board && m_board.isAtUnknownKey()) ||
               (m_place == Place::entry && m_entry.isAtUnknownKey());
    }

    bool enter(Place place) {
        m_places.push_back(m_place);
        m_place = place;
        return m_places.size() <= kMaximumDepth;
    }
    void leave() {
        m_place = m_places.back();
        m_places.pop_back();
    }

    /// Whether the record that has just ended, the last of these, is one, and the one that should
    /// come.
    template <typename Record>
    bool isRecord(const OpenObject<Record>& object, const std::vector<Record>& records) {
        if (m_advance) {
            m_advance(m_stream.Tell() - std::exchange(m_told, m_stream.Tell()));
        }
        return object.hasAllRequired() && (!m_comparison || m_comparison->take(records.back()));
    }

    /// A new record at the end. There is room for as many as the bytes so far let expect: doubling
    /// would take up to three times what the records need.
    template <typename Record>
    Record& added(std::vector<Record>& records) {
        if (m_comparison) {
            records.clear();
        }
        constexpr std::size_t kFewRecords = 256;
        constexpr double kReserve = 1.05;
        if (records.size() == records.capacity() && records.size() >= kFewRecords) {
            const auto share =
                static_cast<double>(m_byteCount) / static_cast<double>(m_stream.Tell());
            const auto expected = static_cast<double>(records.size()) * share;
            records.reserve(static_cast<std::size_t>(expected * kReserve) + kFewRecords);
        }
        return records.emplace_back();
    }

    BackupDocument& m_document;
    const JsonStream& m_stream;
    std::size_t m_byteCount;
    const Advance& m_advance;
    Comparison* m_comparison;
    /// How far `m_advance` knows it to be.
    std::size_t m_told = 0;
    Place m_place = Place::outside;
    /// Where each thing that is open stands.
    std::vector<Place> m_places;
    OpenObject<BackupDocument> m_top;
    OpenObject<BackupDocument::BoardRecord> m_board;
    OpenObject<BackupDocument::EntryRecord> m_entry;
};

bool readDocument(std::string_view text, BackupDocument& document, const Advance& advance,
                  Comparison* comparison = nullptr) {
    // Without recursion: brackets alone must not end the program.
    constexpr auto kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseInsituFlag |
                            rapidjson::kParseNumbersAsStringsFlag;
    if (!base::isValidUtf8(text)) {
        return false;
    }
    JsonStream stream(text);
    DocumentHandler handler(document, stream, text.size(), advance, comparison);
    rapidjson::GenericReader<JsonUtf8, JsonUtf8> reader;
    const auto result = reader.Parse<kFlags>(stream, handler);
    // A zero byte looks like the end.
    return !result.IsError() && stream.Tell() == text.size();
}

std::string_view textOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

BackupDocument decode(std::span<const std::uint8_t> bytes, const Advance& advance) {
    if (bytes.size() > BackupDocument::kMaximumBytes) {
        throw BackupError(BackupErrorCase::tooLarge);
    }
    BackupDocument document;
    if (!readDocument(textOf(bytes), document, advance)) {
        throw BackupError(BackupErrorCase::invalidDocument);
    }
    return document;
}

bool holds(std::span<const std::uint8_t> bytes, const BackupDocument& document,
           const Advance& advance) {
    BackupDocument read;
    Comparison comparison(document);
    return bytes.size() <= BackupDocument::kMaximumBytes &&
           readDocument(textOf(bytes), read, advance, &comparison) && comparison.isWhole(read);
}

} // namespace korvex::backup::BackupFileIO
