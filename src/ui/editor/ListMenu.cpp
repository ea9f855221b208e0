#include "ui/editor/ListMenu.h"

#include "ui/editor/ListEditing.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QTextBlock>

namespace korvex::ui {

namespace {

/// The marker of the innermost list at the caret, or empty.
QString listMarkerAt(const QTextCursor& caret) {
    const auto lists = listsOf(caret.block());
    return lists.empty() ? QString() : toQString(lists.back()->marker);
}

} // namespace

ListMenu::ListMenu(RichTextEdit& edit, const Theme& theme, QWidget* parent)
    : QMenu(tr("Lists"), parent), m_edit(edit) {
    struct Choice {
        QString title;
        const char* marker;
        const char* icon;
        QString keys;
    };
    for (const auto& each :
         {Choice{tr("Bulleted list"), "{disc}", "list-bullets", tr("Ctrl+Shift+8")},
          Choice{tr("Dashed list"), "{hyphen}", "list-dashes", {}},
          Choice{tr("Checked list"), "{check}", "list-checks", {}},
          Choice{tr("Numbered list: 1."), "{decimal}.", "list-numbers", tr("Ctrl+Shift+7")},
          Choice{tr("Numbered list: a."), "{lower-alpha}.", "list-numbers", {}},
          Choice{tr("Numbered list: i."), "{lower-roman}.", "list-numbers", {}}}) {
        auto* const action = addAction(withKeys(each.title, each.keys));
        action->setCheckable(true);
        action->setData(QString::fromLatin1(each.marker));
        const auto draw = [action, &theme, icon = QString::fromLatin1(each.icon)] {
            action->setIcon(IconSet::icon(icon, theme.colors().text));
        };
        draw();
        connect(&theme, &Theme::changed, action, draw);
    }
    addSeparator();
    addAction(tr("No list"));
    connect(this, &QMenu::aboutToShow, this, &ListMenu::showState);
    connect(this, &QMenu::triggered, this, [this](const QAction* action) {
        // The marker that is there takes the list away.
        const auto marker =
            action->isCheckable() ? action->data().toString() : listMarkerAt(m_edit.textCursor());
        m_edit.setFocus();
        m_edit.toggleList(marker);
    });
}

void ListMenu::showState() {
    const auto marker = listMarkerAt(m_edit.textCursor());
    for (auto* const action : actions()) {
        action->setChecked(action->isCheckable() && action->data().toString() == marker);
        // What takes a list away needs one.
        action->setEnabled(action->isCheckable() || !marker.isEmpty());
    }
}

} // namespace korvex::ui
