#pragma once

#include <QMenu>

#include <functional>

class QTextEdit;

namespace korvex::ui {

class RichTextEdit;

/// What the menus of all texts begin with: undoing, the clipboard, all of the text; as it applies
/// now. `pastePlain` is for a text that can also be pasted into without its looks.
void addEditingItems(QMenu& menu, QTextEdit& edit, const std::function<void()>& pastePlain = {});

/// The context menu of a formatted text: the commands as they apply when it is made. Main thread;
/// the editor must outlive it.
class TextMenu final : public QMenu {
    Q_OBJECT

public:
    explicit TextMenu(RichTextEdit& edit, QWidget* parent = nullptr);
};

} // namespace korvex::ui
