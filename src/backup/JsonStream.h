#pragma once

#include "backup/JsonText.h"

#include <rapidjson/encodings.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::backup {

/// Bytes as RapidJSON reads them. Its own streams look at each byte of a string three times and
/// copy it; this one hands a string out as the part of the bytes where it stands, and only one that
/// has escapes as a copy. It says to be parsed in place, but nothing is written to the bytes.
class JsonStream {
public:
    using Ch = char;

    explicit JsonStream(std::string_view bytes)
        : m_begin(bytes.data()), m_at(bytes.data()), m_end(bytes.data() + bytes.size()) {}
    JsonStream(const JsonStream&) = delete;
    JsonStream& operator=(const JsonStream&) = delete;

    Ch Peek() const { return m_at == m_end ? '\0' : *m_at; }
    Ch Take() { return m_at == m_end ? '\0' : *m_at++; }
    std::size_t Tell() const { return static_cast<std::size_t>(m_at - m_begin); }

    // Where a string begins, each character that an escape stands for, and where the string ends.
    Ch* PutBegin() {
        m_string = rest().substr(0, 0);
        m_hasEscapes = false;
        return nullptr;
    }
    void Put(Ch character) {
        // The zero only ends the string: one that is a part of it is put as a code point.
        if (character != '\0') {
            unescaped().push_back(character);
        }
    }
    std::size_t PutEnd(Ch*) {
        if (m_hasEscapes) {
            m_string = m_unescaped;
        }
        return m_string.size() + 1;
    }
    void Flush() {}

    void putCodePoint(unsigned codePoint) {
        Appending appending{unescaped()};
        rapidjson::UTF8<>::Encode(appending, codePoint);
    }
    /// Takes what stands up to the next byte that is more than a part of the string.
    void takePlainRun() {
        const auto run = rest().substr(0, plainJsonLength(rest()));
        if (m_hasEscapes) {
            m_unescaped.append(run);
        } else {
            m_string = {m_string.data(), m_string.size() + run.size()};
        }
        m_at += run.size();
    }

    /// The string that was read last; valid until the next one is read.
    std::string_view string() const { return m_string; }
    /// Whether it holds what does not stand so in the bytes.
    bool hasEscapes() const { return m_hasEscapes; }
    /// What was taken last.
    std::string_view last(std::size_t length) const { return {m_at - length, length}; }

private:
    struct Appending {
        std::string& text;
        void Put(char byte) { text.push_back(byte); }
    };

    std::string_view rest() const { return {m_at, static_cast<std::size_t>(m_end - m_at)}; }
    std::string& unescaped() {
        if (!m_hasEscapes) {
            m_unescaped.assign(m_string);
            m_hasEscapes = true;
        }
        return m_unescaped;
    }

    const char* m_begin;
    const char* m_at;
    const char* m_end;
    std::string_view m_string;
    std::string m_unescaped;
    bool m_hasEscapes = false;
};

/// UTF-8 that is taken from a `JsonStream` run by run.
struct JsonUtf8 : rapidjson::UTF8<> {
    using rapidjson::UTF8<>::Encode;
    static void Encode(JsonStream& to, unsigned codePoint) { to.putCodePoint(codePoint); }
};

} // namespace korvex::backup

template <>
struct rapidjson::Transcoder<korvex::backup::JsonUtf8, korvex::backup::JsonUtf8>
    : rapidjson::Transcoder<rapidjson::UTF8<>, rapidjson::UTF8<>> {
    using rapidjson::Transcoder<rapidjson::UTF8<>, rapidjson::UTF8<>>::Transcode;
    static bool Transcode(korvex::backup::JsonStream& from, korvex::backup::JsonStream&) {
        from.takePlainRun();
        return true;
    }
};
