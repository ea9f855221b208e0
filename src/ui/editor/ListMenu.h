#pragma once

#include "ui/editor/RichTextEdit.h"
#include "ui/kit/theme/Theme.h"

#include <QMenu>

namespace korvex::ui {

/// Chooses the list that the selected paragraphs are items of; the one at the caret is ticked. Main
/// thread; the editor must outlive it.
class ListMenu final : public QMenu {
    Q_OBJECT

public:
    ListMenu(RichTextEdit& edit, const Theme& theme, QWidget* parent = nullptr);

private:
    void showState();

    RichTextEdit& m_edit;
};

} // namespace korvex::ui
