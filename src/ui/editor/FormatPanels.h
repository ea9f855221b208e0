#pragma once

#include "richtext/code/CodeHighlighter.h"
#include "ui/editor/TableEditing.h"
#include "ui/kit/theme/Theme.h"

#include <QObject>
#include <QPointer>
#include <QRect>

namespace korvex::ui {

class Popover;
class RichTextEdit;

/// The panels that ask what a command on formatted text needs to know. At most one is open; when it
/// closes the keyboard comes back to the text. Anchors are in global coordinates. Main thread;
/// editor, highlighter and theme must outlive it.
class FormatPanels final : public QObject {
    Q_OBJECT

public:
    FormatPanels(RichTextEdit& edit, richtext::CodeHighlighter& code, const Theme& theme);
    ~FormatPanels() override;

    void openLink(const QRect& anchor);
    void openTable(const QRect& anchor);
    void openLanguages(const QRect& anchor);

private:
    template <typename Panel, typename... Arguments>
    Panel* open(const QRect& anchor, Arguments&&... arguments);

    RichTextEdit& m_edit;
    richtext::CodeHighlighter& m_code;
    const Theme& m_theme;
    TableEditing m_tables;
    QPointer<Popover> m_panel;
};

} // namespace korvex::ui
