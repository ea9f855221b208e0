#include "ui/text/CodeColors.h"

#include "richtext/code/CodePieces.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextFormats.h"

#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace korvex::ui {

namespace {

using namespace std::chrono_literals;
using Ranges = QList<QTextLayout::FormatRange>;

/// So long the keys must rest before code is analysed anew.
constexpr auto kPause = 120ms;

std::u16string_view unitsOf(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

std::string languageOf(const QTextCharFormat& format) {
    return toUtf8(format.stringProperty(kCodeLanguageProperty));
}

/// A run of code: where it stands in its block, and in its piece.
struct Part {
    QTextBlock block;
    int start = 0;
    int length = 0;
    richtext::CodePieces::Place place;
};

struct Code {
    richtext::CodePieces pieces;
    std::vector<Part> parts;
};

/// The code of a document, in order. As in the text, ends of paragraphs belong to it.
Code codeOf(const QTextDocument& document) {
    Code result;
    const auto add = [&](const QTextBlock& block, const QTextCharFormat& format, int start,
                         const QString& text) {
        const auto place = result.pieces.add(unitsOf(text), languageOf(format));
        if (place) {
            result.parts.push_back({block, start, static_cast<int>(text.size()), *place});
        }
    };
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const auto fragment = it.fragment();
            add(block, fragment.charFormat(), fragment.position() - block.position(),
                fragment.text());
        }
        if (!isGap(block) && block.next().isValid()) {
            add(block, block.charFormat(), block.length() - 1, QStringLiteral("\n"));
        }
    }
    return result;
}

/// The colours of a part, counted from the start of its block.
void append(Ranges& ranges, const Part& part, const std::vector<richtext::ScopeRun>& scopes,
            const TextLook& look) {
    const richtext::TextRange inPiece{part.place.offset, static_cast<std::size_t>(part.length)};
    richtext::forEachColor(
        scopes, inPiece, [&](richtext::TextRange colored, richtext::SystemColor color) {
            QTextLayout::FormatRange range;
            range.start = part.start + static_cast<int>(colored.location);
            range.length = static_cast<int>(colored.length);
            range.format.setForeground(look.foreground(richtext::Color::named(color)));
            ranges.append(range);
        });
}

/// The colours that each block is to have, in the order of the document.
struct Wanted {
    QTextBlock block;
    Ranges ranges;
    bool isAwaited = false;
};

} // namespace

bool colorCode(QTextDocument& document, richtext::CodeHighlighter& code, const TextLook& look) {
    bool isComplete = true;
    std::vector<Wanted> wanted;
    const auto [pieces, parts] = codeOf(document);
    auto part = parts.begin();
    for (std::size_t i = 0; i < pieces.pieces().size(); ++i) {
        const auto& piece = pieces.pieces()[i];
        const auto* const scopes = code.scopes(piece.code, piece.language);
        isComplete = isComplete && scopes;
        for (; part != parts.end() && part->place.piece == i; ++part) {
            if (wanted.empty() || wanted.back().block != part->block) {
                wanted.push_back({part->block, {}});
            }
            if (scopes) {
                append(wanted.back().ranges, *part, *scopes, look);
            } else {
                wanted.back().isAwaited = true;
            }
        }
    }
    int first = -1;
    int last = -1;
    auto next = wanted.begin();
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        Ranges ranges;
        if (next != wanted.end() && next->block == block) {
            const auto& own = *next++;
            if (own.isAwaited) {
                continue;
            }
            ranges = own.ranges;
        }
        auto* const layout = block.layout();
        // While something is composed here, the layout's formats are those of the input method.
        if (layout->formats() != ranges && layout->preeditAreaText().isEmpty()) {
            layout->setFormats(ranges);
            first = first < 0 ? block.position() : first;
            last = block.position() + block.length();
        }
    }
    if (first >= 0) {
        document.markContentsDirty(first, last - first);
    }
    return isComplete;
}

CodeColors::CodeColors(QTextDocument& document, richtext::CodeHighlighter& code,
                       const TextLook& look, QObject* parent)
    : QObject(parent), m_document(document), m_code(code), m_look(look) {
    m_pause.setSingleShot(true);
    m_pause.setInterval(kPause);
    connect(&m_pause, &QTimer::timeout, this, &CodeColors::update);
    connect(&document, &QTextDocument::contentsChange, this, &CodeColors::moveColors);
    m_arrivals = code.arrived().connect([this] {
        if (m_isWaiting) {
            update();
        }
    });
    update();
}

void CodeColors::setLook(const TextLook& look) {
    m_look = look;
    update();
}

void CodeColors::update() {
    m_pause.stop();
    m_isWaiting = !colorCode(m_document, m_code, m_look);
}

/// Until the new colours are known the old ones stay with their words.
void CodeColors::moveColors(int position, int removed, int added) {
    m_pause.start();
    const auto block = m_document.findBlock(position);
    auto* const layout = block.isValid() ? block.layout() : nullptr;
    if (!layout || layout->formats().isEmpty() || !layout->preeditAreaText().isEmpty()) {
        return;
    }
    const auto start = position - block.position();
    auto ranges = layout->formats();
    for (auto& range : ranges) {
        if (range.start >= start + removed) {
            range.start += added - removed;
        } else if (range.start + range.length > start) {
            range.length = std::max(range.length + added - removed, 0);
        }
    }
    ranges.removeIf([&](const auto& range) {
        return range.length <= 0 || range.start < 0 || range.start >= block.length();
    });
    layout->setFormats(ranges);
}

} // namespace korvex::ui
