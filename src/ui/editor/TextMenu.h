#pragma once

#include <QMenu>

namespace korvex::ui {

class RichTextEdit;

/// The context menu of a formatted text: the commands as they apply when it is made. Main thread;
/// the editor must outlive it.
class TextMenu final : public QMenu {
    Q_OBJECT

public:
    explicit TextMenu(RichTextEdit& edit, QWidget* parent = nullptr);
};

} // namespace korvex::ui
