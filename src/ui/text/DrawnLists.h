#pragma once

#include "richtext/text/ParagraphStyle.h"

#include <QPointer>
#include <QTextDocument>
#include <QTextList>

#include <map>
#include <vector>

namespace korvex::ui {

/// The lists that a document draws, found by what they stand for: the lists around an item, from
/// the outermost to its own. The document is looked through once, when the first one is asked for;
/// whoever draws a list meanwhile adds it. Main thread; the document must outlive it.
class DrawnLists {
public:
    explicit DrawnLists(const QTextDocument& document) : m_document(document) {}

    /// Null where none is drawn for these. `lists` are not empty.
    const QTextList* of(const std::vector<richtext::TextListRef>& lists);
    void add(const std::vector<richtext::TextListRef>& lists, QTextList& list);
    /// The list stands for other ones from now on, with all its items. It does not mark them as
    /// changed: they get formats of their new depth from whoever moves them.
    void rename(QTextList& list, const std::vector<richtext::TextListRef>& lists);

private:
    void learn();

    const QTextDocument& m_document;
    bool m_isKnown = false;
    /// A QTextDocument of Qt deletes a list that lost its last item; a TextDocument keeps it.
    std::map<std::vector<richtext::TextListRef>, QPointer<QTextList>> m_lists;
};

} // namespace korvex::ui
