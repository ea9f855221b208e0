#include "ui/editor/FormatPanels.h"

#include "ui/editor/LanguageMenu.h"
#include "ui/editor/LinkPopover.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/editor/TablePopover.h"
#include "ui/kit/words/Text.h"
#include "ui/text/Links.h"

#include <utility>

namespace korvex::ui {

FormatPanels::FormatPanels(RichTextEdit& edit, richtext::CodeHighlighter& code, const Theme& theme)
    : m_edit(edit), m_code(code), m_theme(theme), m_tables(edit) {}

FormatPanels::~FormatPanels() {
    if (m_panel) {
        m_panel->closeNow();
    }
}

template <typename Panel, typename... Arguments>
Panel* FormatPanels::open(const QRect& anchor, Arguments&&... arguments) {
    if (m_panel) {
        m_panel->closeNow();
    }
    m_edit.setFocus();
    auto* const panel = new Panel(std::forward<Arguments>(arguments)..., m_theme, m_edit.window());
    m_panel = panel;
    panel->openAt(anchor);
    panel->setFocus();
    return panel;
}

void FormatPanels::openLink(const QRect& anchor) {
    auto* const panel = open<LinkPopover>(anchor, m_edit.formatState().link);
    // A press into the text may have moved the caret meanwhile; the link belongs where it was.
    connect(panel, &LinkPopover::chosen, this, [this, place = m_edit.textCursor()](const auto& to) {
        m_edit.setTextCursor(place);
        m_edit.setLink(to);
    });
    connect(panel, &LinkPopover::openRequested, this, &ui::openLink);
}

void FormatPanels::openTable(const QRect& anchor) {
    auto* const panel = open<TablePopover>(anchor);
    connect(panel, &TablePopover::chosen, this,
            [this](int rows, int columns) { m_tables.insert(rows, columns); });
}

void FormatPanels::openLanguages(const QRect& anchor) {
    auto* const panel = open<LanguageMenu>(anchor, m_code, m_edit.formatState().codeLanguage);
    connect(panel, &LanguageMenu::chosen, this, [this](const QString& id) {
        m_edit.setFocus();
        m_edit.perform({richtext::RichTextAction::codeLanguage(toUtf8(id))});
    });
}

} // namespace korvex::ui
