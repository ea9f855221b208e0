#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::cli {

/// A file descriptor behind one large buffer. What a command prints goes out after its work is
/// done, so nothing that the reader does can stop a change half way.
class Output {
public:
    explicit Output(int descriptor) : m_descriptor(descriptor) { m_buffer.reserve(kBufferBytes); }

    void put(char character) {
        m_buffer.push_back(character);
        if (m_buffer.size() >= kBufferBytes) {
            flush();
        }
    }
    void write(std::string_view text) {
        m_buffer.append(text);
        if (m_buffer.size() >= kBufferBytes) {
            flush();
        }
    }
    void spaces(std::size_t count) { m_buffer.append(count, ' '); }

    /// Throws CommandLineError (`unusable`) when the text cannot be written. A reader that has gone
    /// away wants no more: what is left for it is dropped.
    void flush();

private:
    static constexpr std::size_t kBufferBytes = 64 * 1024;

    int m_descriptor;
    bool m_readerIsGone = false;
    std::string m_buffer;
};

/// What the terminal behind a descriptor can do.
struct Terminal {
    bool isPresent = false;
    /// A terminal, and neither NO_COLOR nor TERM=dumb asks for plain text.
    bool hasColor = false;
    /// In columns.
    std::size_t width = 80;

    static Terminal of(int descriptor);
};

/// Text on a descriptor as it stands. What cannot be written is lost.
void writeRaw(int descriptor, std::string_view text);

/// "korvex: message" as one line on a descriptor, fit for a terminal. What cannot be written is
/// lost.
void writeMessage(int descriptor, std::string_view message);

} // namespace korvex::cli
