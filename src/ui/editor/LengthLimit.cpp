#include "ui/editor/LengthLimit.h"

#include "base/Text.h"
#include "base/Utf16.h"
#include "model/EntryContentLimit.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextDocumentConversion.h"

#include <QTextDocument>

#include <algorithm>

namespace korvex::ui {

using model::EntryContentLimit;

namespace {

/// No UTF-16 unit has more bytes.
constexpr std::ptrdiff_t kBytesPerUnit = 3;
constexpr auto kMaximumCharacters =
    static_cast<std::ptrdiff_t>(EntryContentLimit::kMaximumCharacters);
constexpr auto kMaximumBytes = static_cast<std::ptrdiff_t>(EntryContentLimit::kMaximumBytes);

} // namespace

LengthLimit::LengthLimit(const QTextDocument& document) : m_document(document) {
    connect(&document, &QTextDocument::contentsChange, this, [this](int, int, int added) {
        // Wherever characters are put, they part one that is there at most.
        m_knownRoom -= added + 1;
    });
}

bool LengthLimit::allowsReplacing(int from, int to, QStringView replacement) {
    if (isWithinKnownRoom(replacement.size())) {
        return true;
    }
    const auto text = base::utf8(textOf(m_document).text());
    const auto count = base::characterCount(text, EntryContentLimit::kMaximumCharacters + 1);
    m_knownRoom =
        std::min(kMaximumCharacters - static_cast<std::ptrdiff_t>(count),
                 (kMaximumBytes - static_cast<std::ptrdiff_t>(text.size())) / kBytesPerUnit);
    const auto start = offsetOf(m_document, from);
    const auto end = offsetOf(m_document, to);
    return EntryContentLimit::allowsReplacing(text, start, end - start,
                                              toUtf8(replacement.toString()));
}

bool LengthLimit::isWithinKnownRoom(qsizetype added) const {
    // A document has a unit for each of the text's; a character has at least one.
    return m_document.characterCount() + added <= kMaximumCharacters || added + 1 <= m_knownRoom;
}

} // namespace korvex::ui
