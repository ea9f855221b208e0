#pragma once

#include <tsl/robin_map.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct UConverter;

namespace korvex::richtext::rtf {

/// The code page of a font's character set as RTF numbers them; `fallback` for those that mean the
/// document's own.
std::int32_t codePageOf(std::int32_t charset, std::int32_t fallback);

/// What is known of a code page.
struct CodePageEntry;

/// Turns bytes of a code page into UTF-16. For one thread.
class CodePage {
public:
    explicit CodePage(const CodePageEntry& entry);
    ~CodePage();
    CodePage(CodePage&&) = delete;

    /// How many bytes a character has that begins with this one.
    std::size_t lengthAt(std::uint8_t lead) const;
    /// The character that the bytes mean; U+FFFD where they mean none.
    std::u16string_view decode(std::string_view bytes);

private:
    struct Close {
        void operator()(UConverter* converter) const;
    };

    char16_t upper(std::uint8_t byte);
    std::u16string_view converted(std::string_view bytes);

    const CodePageEntry* m_entry;
    std::unique_ptr<UConverter, Close> m_converter;
    /// What single bytes from 0x80 on mean, filled when the first of them comes.
    std::array<char16_t, 128> m_upper{};
    bool m_hasUpper = false;
    std::array<char16_t, 4> m_decoded{};
};

/// Bytes on their way to text: a character's first byte waits for the others, whatever stands
/// between them.
class ByteDecoder {
public:
    /// Selects the code page of the bytes to come; an unknown one is read as 1252.
    void select(std::int32_t codePage) { m_number = codePage; }

    /// Whether a plain byte below 0x80 is just itself.
    bool isIdle() const { return m_pendingCount == 0; }

    /// Calls `put` with the text that the byte completes.
    template <typename Put>
    void add(std::uint8_t byte, Put&& put) {
        constexpr std::uint8_t kFirstUpper = 0x80;
        if (m_pendingCount == 0) {
            if (byte < kFirstUpper) {
                const auto unit = static_cast<char16_t>(byte);
                put(std::u16string_view(&unit, 1));
                return;
            }
            m_page = &page();
            m_expected = m_page->lengthAt(byte);
        }
        m_pending[m_pendingCount++] = static_cast<char>(byte);
        if (m_pendingCount == m_expected) {
            m_pendingCount = 0;
            put(m_page->decode({m_pending.data(), m_expected}));
        }
    }
    /// Ends what can belong together. A character that was cut off becomes U+FFFD.
    template <typename Put>
    void finish(Put&& put) {
        if (m_pendingCount > 0) {
            m_pendingCount = 0;
            put(std::u16string_view(u"\uFFFD"));
        }
    }

private:
    CodePage& page();

    tsl::robin_map<std::int32_t, std::unique_ptr<CodePage>> m_pages;
    /// The code page of the pending bytes.
    CodePage* m_page = nullptr;
    std::int32_t m_number = 0;
    std::array<char, 4> m_pending{};
    std::size_t m_pendingCount = 0;
    std::size_t m_expected = 0;
};

} // namespace korvex::richtext::rtf
