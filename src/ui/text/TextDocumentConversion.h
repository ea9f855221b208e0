#pragma once

#include "richtext/text/AttributedString.h"

#include <QTextCursor>
#include <QTextDocument>

#include <cstddef>

namespace korvex::ui {

/// How formatted text looks: fonts and colours of the theme. See TextLook.h.
struct TextLook;

/// The one place where formatted text becomes a QTextDocument and comes back. What `setText` shows,
/// `textOf` gives back as an equivalent string: every attribute that a stored text can have
/// survives, whether Qt can draw it or not. Main thread.

void setText(QTextDocument& document, const richtext::AttributedString& text, const TextLook& look);
richtext::AttributedString textOf(const QTextDocument& document);

/// Replaces the cursor's selection, within one step of undo; the cursor ends after it. How far its
/// paragraphs stand from those around them is left to TextSpacing.
void insertText(QTextCursor& cursor, const richtext::AttributedString& text, const TextLook& look);
/// What is selected.
richtext::AttributedString textOf(const QTextCursor& selection);

/// These convert between positions of a document and UTF-16 offsets of its text.
std::size_t offsetOf(const QTextDocument& document, int position);
int positionOf(const QTextDocument& document, std::size_t offset);

} // namespace korvex::ui
