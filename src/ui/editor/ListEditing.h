#pragma once

#include "richtext/text/ParagraphStyle.h"
#include "ui/text/DrawnLists.h"
#include "ui/text/TextLook.h"

#include <QString>
#include <QTextBlock>
#include <QTextCursor>

#include <vector>

namespace korvex::ui {

/// Lists in a document under edit: which paragraphs are their items, and the commands that change
/// that. A command is about the paragraphs that the range touches, and is one step of undo. Main
/// thread.

enum class ListKind { none, bulleted, numbered, other };
enum class Nesting { deeper, shallower };

/// The lists around a block, from the outermost to the one that it is an item of.
std::vector<richtext::TextListRef> listsOf(const QTextBlock& block);
/// The kind of the innermost list.
ListKind listKindOf(const QTextBlock& block);

/// The style includes the lists of the paragraph, but not its cells.
richtext::ParagraphStyle paragraphStyleOf(const QTextBlock& block);
/// The paragraph joins the drawn list that stands for the same objects, or begins one. `drawn` are
/// those of the block's document, for one command on many paragraphs.
void setParagraphStyle(const QTextBlock& block, const richtext::ParagraphStyle& style,
                       const TextLook& look, DrawnLists& drawn);

/// Makes the paragraphs items of a list with this marker, as TextList has it; those that all are
/// already leave their lists. A list right above or below goes on. Code stays outside of lists.
void toggleList(const QTextCursor& range, const QString& marker, const TextLook& look);
/// Items go one list deeper or less deep. False, and nothing is changed, where there is no list.
bool nestLists(const QTextCursor& range, Nesting nesting, const TextLook& look);
void leaveLists(const QTextCursor& range, const TextLook& look);

} // namespace korvex::ui
