#pragma once

#include <unicode/normalizer2.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::base {

/// What single code points become when a text is folded, worked out once for each. For this floor's
/// own sources.
class CharacterFolding {
public:
    enum class Kind : std::uint8_t {
        /// The character becomes its form, whatever stands before it.
        plain,
        /// As `plain`, but its form ends with a mark, which has its place among those that follow.
        markEnded,
        /// The character becomes nothing, as if it had not been there.
        nothing,
        /// The character stays and belongs to the letter before; the order of several means
        /// nothing.
        mark,
        /// The character may be composed with what stands before it into another.
        joining,
    };
    struct Form {
        static constexpr std::size_t kRoom = 6;
        static constexpr std::uint8_t kIsLong = 0xff;

        Kind kind = Kind::plain;
        /// How many of `bytes` are used; `kIsLong` for a form that has no room there.
        std::uint8_t length = 0;
        /// The form in UTF-8, or the number of a long form.
        std::array<char, kRoom> bytes{};
    };

    enum class DotlessI { isOneWithI, isALetter };
    explicit CharacterFolding(DotlessI dotlessI);

    const Form& form(UChar32 codePoint) const {
        const auto& block = m_blocks[static_cast<std::size_t>(codePoint) / kBlockSize];
        return (block ? *block
                      : filled(codePoint))[static_cast<std::size_t>(codePoint) % kBlockSize];
    }
    std::string_view longForm(const Form& form) const;
    /// Appends a form, be it short or long.
    void append(const Form& form, std::string& to) const {
        if (form.length == Form::kIsLong) {
            to.append(longForm(form));
        } else {
            to.append(form.bytes.data(), form.length);
        }
    }
    const icu::Normalizer2& composition() const { return m_composition; }

private:
    static constexpr std::size_t kBlockSize = 256;
    static constexpr std::size_t kCodePoints = 0x110000;
    using Block = std::array<Form, kBlockSize>;

    const Block& filled(UChar32 codePoint) const;
    Form made(UChar32 codePoint) const;
    void fold(UChar32 codePoint, icu::UnicodeString& to) const;
    icu::UnicodeString decomposed(UChar32 codePoint) const;

    DotlessI m_dotlessI;
    const icu::Normalizer2& m_composition;
    const icu::Normalizer2& m_compatibility;
    mutable std::array<std::unique_ptr<Block>, kCodePoints / kBlockSize> m_blocks;
    mutable std::vector<std::string> m_longForms;
};

} // namespace korvex::base
