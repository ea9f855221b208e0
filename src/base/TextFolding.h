#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::base {

/// A range of bytes of a text.
struct ByteRange {
    std::size_t offset = 0;
    std::size_t length = 0;

    bool operator==(const ByteRange&) const = default;
};

/// Brings texts into the form in which they are searched: without differences of case (ß is ss),
/// of diacritics and of width, in one locale (in Turkish, I is the capital of ı). A text contains
/// another, as people see it, when its folded form has the other's in it. Costs little to make;
/// what it learns of characters it keeps. One thread.
class TextFolding {
public:
    /// A BCP 47 tag or an ICU name; empty means the user's, from LC_ALL, LC_CTYPE or LANG.
    explicit TextFolding(const std::string& locale = {});
    ~TextFolding();
    TextFolding(const TextFolding&) = delete;
    TextFolding& operator=(const TextFolding&) = delete;

    /// UTF-8 in, UTF-8 out; damaged text stays what it is, byte for byte.
    std::string folded(std::string_view text) const;
    void appendFolded(std::string_view text, std::string& to) const;

    /// Where `text` holds any of these folded terms, in order, without overlaps, as ranges of its
    /// own bytes that begin and end between characters. For what is shown; slower than `folded`.
    std::vector<ByteRange> ranges(std::string_view text,
                                  const std::vector<std::string>& foldedTerms) const;

private:
    struct Tables;
    std::unique_ptr<Tables> m_tables;
};

} // namespace korvex::base
