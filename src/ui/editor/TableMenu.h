#pragma once

#include "ui/editor/TableEditing.h"

#include <QMenu>

#include <utility>
#include <vector>

namespace korvex::ui {

/// The text of a table command.
QString titleOf(TableAction action);

/// The commands on the table at the caret; those that do not apply are disabled. Main thread; the
/// editor must outlive it.
class TableMenu final : public QMenu {
    Q_OBJECT

public:
    explicit TableMenu(RichTextEdit& edit, QWidget* parent = nullptr);

private:
    TableEditing m_tables;
    std::vector<std::pair<QAction*, TableAction>> m_actions;
};

} // namespace korvex::ui
