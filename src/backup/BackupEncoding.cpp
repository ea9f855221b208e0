#include "backup/BackupFields.h"
#include "backup/BackupFileIO.h"
#include "backup/JsonText.h"

#include "base/Base64.h"
#include "base/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace korvex::backup::BackupFileIO {

namespace {

/// It takes what an output takes, and only counts the bytes.
class Length {
public:
    void put(std::string_view text) { m_bytes += text.size(); }
    void putBase64(const base::Bytes& bytes) { m_bytes += base::base64Length(bytes.size()); }

    std::size_t bytes() const { return m_bytes; }

private:
    std::size_t m_bytes = 0;
};

/// Writes to where a `Length` has found that there is room.
class Memory {
public:
    explicit Memory(base::Bytes& bytes) : m_at(reinterpret_cast<char*>(bytes.data())) {}

    void put(std::string_view text) {
        std::memcpy(m_at, text.data(), text.size());
        m_at += text.size();
    }
    void putBase64(const base::Bytes& bytes) {
        base::writeBase64(bytes, m_at);
        m_at += base::base64Length(bytes.size());
    }

private:
    char* m_at;
};

/// Hands on what is written, a piece of some size at a time.
class Pieces {
public:
    explicit Pieces(const std::function<void(std::string_view)>& sink) : m_sink(sink) {}

    void put(std::string_view text) {
        if (text.size() > m_buffer.size() - m_used) {
            flush();
            if (text.size() > m_buffer.size()) {
                handOn(text);
                return;
            }
        }
        std::memcpy(m_buffer.data() + m_used, text.data(), text.size());
        m_used += text.size();
    }
    void putBase64(std::span<const std::uint8_t> bytes) {
        while (!bytes.empty()) {
            if (m_buffer.size() - m_used < base::base64Length(1)) {
                flush();
            }
            // Whole groups of three, all but the last.
            const auto room = (m_buffer.size() - m_used) / base::base64Length(1) * 3;
            const auto part = bytes.first(std::min(bytes.size(), room));
            base::writeBase64(part, m_buffer.data() + m_used);
            m_used += base::base64Length(part.size());
            bytes = bytes.subspan(part.size());
        }
    }
    void flush() {
        handOn({m_buffer.data(), m_used});
        m_used = 0;
    }

private:
    void handOn(std::string_view piece) {
        m_bytes += piece.size();
        if (m_bytes > BackupDocument::kMaximumBytes) {
            throw BackupError(BackupErrorCase::tooLarge);
        }
        m_sink(piece);
    }

    static constexpr std::size_t kPieceBytes = 256 * 1024;

    const std::function<void(std::string_view)>& m_sink;
    std::vector<char> m_buffer = std::vector<char>(kPieceBytes);
    std::size_t m_used = 0;
    std::size_t m_bytes = 0;
};

/// A document as JSON. The sink is a type of its own and not an interface: it is called for each
/// few bytes.
template <typename Sink>
class Writer {
public:
    explicit Writer(Sink& sink) : m_sink(sink) {}

    template <typename Record>
    void object(const Record& record) {
        m_sink.put("{");
        std::string_view separator = "";
        std::apply([&](const auto&... fields) { (member(record, fields, separator), ...); },
                   kFields<Record>);
        m_sink.put("}");
    }

private:
    template <typename Record, typename Value>
    void member(const Record& record, const Field<Record, Value>& field,
                std::string_view& separator) {
        put(field.key, record.*field.member, separator);
    }

    template <typename Value>
    void put(std::string_view key, const std::optional<Value>& optional,
             std::string_view& separator) {
        if (optional) {
            put(key, *optional, separator);
        }
    }
    template <typename Value>
    void put(std::string_view key, const Value& member, std::string_view& separator) {
        m_sink.put(separator);
        m_sink.put("\"");
        m_sink.put(key);
        m_sink.put("\":");
        value(member);
        separator = ",";
    }

    template <typename Record>
    void value(const std::vector<Record>& records) {
        m_sink.put("[");
        std::string_view separator = "";
        for (const auto& record : records) {
            m_sink.put(separator);
            object(record);
            separator = ",";
        }
        m_sink.put("]");
    }
    void value(const base::Bytes& bytes) {
        m_sink.put("\"");
        m_sink.putBase64(bytes);
        m_sink.put("\"");
    }
    void value(const std::string& text) {
        // Bytes that are no text would make the whole file unreadable.
        if (base::isValidUtf8(text)) {
            string(text);
        } else {
            string(base::repairedUtf8(text));
        }
    }
    void value(const base::Uuid& id) {
        m_sink.put("\"");
        m_sink.put(id.text());
        m_sink.put("\"");
    }
    void value(base::Instant instant) {
        if (!std::isfinite(instant.seconds)) {
            throw BackupError(BackupErrorCase::invalidDocument); // JSON has no such number
        }
        number(instant.seconds);
    }
    void value(std::int64_t integer) { number(integer); }
    void value(bool boolean) { m_sink.put(boolean ? "true" : "false"); }

    template <typename Number>
    void number(Number number) {
        std::array<char, 32> digits;
        const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
        m_sink.put({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }

    void string(std::string_view text) {
        m_sink.put("\"");
        while (true) {
            const auto plain = plainJsonLength(text);
            m_sink.put(text.substr(0, plain));
            if (plain == text.size()) {
                break;
            }
            escape(text[plain]);
            text.remove_prefix(plain + 1);
        }
        m_sink.put("\"");
    }
    void escape(char character) {
        switch (character) {
        case '"':
            return m_sink.put("\\\"");
        case '\\':
            return m_sink.put("\\\\");
        case '\b':
            return m_sink.put("\\b");
        case '\f':
            return m_sink.put("\\f");
        case '\n':
            return m_sink.put("\\n");
        case '\r':
            return m_sink.put("\\r");
        case '\t':
            return m_sink.put("\\t");
        default:
            break;
        }
        constexpr std::string_view kDigits = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(character);
        const std::array escaped{'\\', 'u', '0', '0', kDigits[code >> 4U], kDigits[code & 15U]};
        m_sink.put({escaped.data(), escaped.size()});
    }

    Sink& m_sink;
};

} // namespace

base::Bytes encode(const BackupDocument& document) {
    document.checkBackupSize(BackupDocument::kMaximumBytes);
    Length length;
    Writer(length).object(document);
    if (length.bytes() > BackupDocument::kMaximumBytes) {
        throw BackupError(BackupErrorCase::tooLarge);
    }
    base::Bytes bytes(length.bytes());
    Memory memory(bytes);
    Writer(memory).object(document);
    return bytes;
}

void encode(const BackupDocument& document, const std::function<void(std::string_view)>& sink) {
    document.checkBackupSize(BackupDocument::kMaximumBytes);
    Pieces pieces(sink);
    Writer(pieces).object(document);
    pieces.flush();
}

} // namespace korvex::backup::BackupFileIO
