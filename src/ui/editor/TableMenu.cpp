#include "ui/editor/TableMenu.h"

namespace korvex::ui {

QString titleOf(TableAction action) {
    switch (action) {
    case TableAction::insertRowAbove:
        return TableMenu::tr("Insert Row Above");
    case TableAction::insertRowBelow:
        return TableMenu::tr("Insert Row Below");
    case TableAction::insertColumnLeft:
        return TableMenu::tr("Insert Column Left");
    case TableAction::insertColumnRight:
        return TableMenu::tr("Insert Column Right");
    case TableAction::duplicateRow:
        return TableMenu::tr("Duplicate Row");
    case TableAction::duplicateColumn:
        return TableMenu::tr("Duplicate Column");
    case TableAction::moveRowUp:
        return TableMenu::tr("Move Row Up");
    case TableAction::moveRowDown:
        return TableMenu::tr("Move Row Down");
    case TableAction::moveColumnLeft:
        return TableMenu::tr("Move Column Left");
    case TableAction::moveColumnRight:
        return TableMenu::tr("Move Column Right");
    case TableAction::resetColumnWidth:
        return TableMenu::tr("Reset Column Width");
    case TableAction::deleteRow:
        return TableMenu::tr("Delete Row");
    case TableAction::deleteColumn:
        return TableMenu::tr("Delete Column");
    case TableAction::deleteTable:
        return TableMenu::tr("Delete Table");
    }
    return {};
}

TableMenu::TableMenu(RichTextEdit& edit, QWidget* parent)
    : QMenu(tr("Table"), parent), m_tables(edit) {
    for (const auto each : kTableActions) {
        if (each == TableAction::insertColumnLeft || each == TableAction::duplicateRow ||
            each == TableAction::moveRowUp || each == TableAction::resetColumnWidth ||
            each == TableAction::deleteRow) {
            addSeparator();
        }
        auto* const action =
            addAction(titleOf(each), this, [this, each] { m_tables.perform(each); });
        m_actions.emplace_back(action, each);
    }
    connect(this, &QMenu::aboutToShow, this, [this] {
        for (const auto& [action, what] : m_actions) {
            action->setEnabled(m_tables.isAvailable(what));
        }
    });
}

} // namespace korvex::ui
