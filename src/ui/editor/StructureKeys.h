#pragma once

#include "ui/editor/FormatEditing.h"
#include "ui/editor/ListEditing.h"

#include <Qt>

class QKeyEvent;
class QTextBlock;

namespace korvex::ui {

class RichTextEdit;

/// The keys that mean something else in lists, headings, code and tables: Return, Backspace, Tab
/// and Shift+Tab. What a key does is one step of undo. Main thread; the editor must outlive it.
class StructureKeys final {
public:
    explicit StructureKeys(RichTextEdit& edit) : m_edit(edit) {}

    /// Returns true when the key has done what it means here, or was refused since the text would
    /// become too long.
    bool handle(const QKeyEvent& event);

private:
    void handleReturn(Qt::KeyboardModifiers modifiers);
    /// Return in an empty paragraph ends what the paragraph belongs to.
    bool leftByReturn(const QTextBlock& block);
    /// Goes on with body text below the code.
    void leaveCodeBlock();
    bool handleBackspace();
    void handleTab();
    bool handleBacktab();
    void indentCode();
    void unindentCode();
    bool nest(Nesting nesting);
    FormatEditing formats();

    RichTextEdit& m_edit;
};

} // namespace korvex::ui
