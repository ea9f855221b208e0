#pragma once

#include "ui/text/TextFormats.h"

#include <QObject>
#include <QTextDocument>

#include <optional>

namespace korvex::ui {

/// How lines and paragraphs stand apart. A paragraph's distance to the next one depends on what
/// both are, so it is drawn but never stored: a text keeps the spacing that it came with.

BlockKind kindOf(const QTextBlock& block);

/// Sets how high the lines of such a paragraph are, how far its sides are moved in, and the
/// distance to another one of its kind. Always the same properties in the same order: Qt tells
/// formats apart by it.
void setKind(QTextBlockFormat& format, const richtext::ParagraphStyle& style, BlockKind kind,
             const TextLook& look);

/// Gives the paragraphs the distances that their neighbours ask for, and the whole text the room
/// that code at its edges needs.
void spaceParagraphs(QTextDocument& document, const TextLook& look);

/// Keeps the paragraphs of a document under edit so, whatever changes them; only what cannot be
/// undone comes with its distances. What this changes belongs to the user's step of undo. Main
/// thread; the document must outlive it.
class TextSpacing final : public QObject {
    Q_OBJECT

public:
    explicit TextSpacing(QTextDocument& document, QObject* parent = nullptr);

    /// To be set before any text; what is typed and pasted from then on is spaced by it.
    void setLook(const TextLook& look) { m_look = look; }

private:
    void note(int position, int added);
    void update();

    QTextDocument& m_document;
    std::optional<TextLook> m_look;
    /// What has changed since the last update; no position where nothing has.
    int m_from = -1;
    int m_to = -1;
    bool m_isUpdating = false;
};

} // namespace korvex::ui
