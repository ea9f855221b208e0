#include "ui/text/DrawnLists.h"

#include "ui/text/TextFormats.h"

#include <QTextBlock>

#include <unordered_set>

namespace korvex::ui {

using richtext::TextListRef;

const QTextList* DrawnLists::of(const std::vector<TextListRef>& lists) {
    learn();
    const auto known = m_lists.find(lists);
    return known == m_lists.end() ? nullptr : known->second.data();
}

void DrawnLists::add(const std::vector<TextListRef>& lists, QTextList& list) {
    learn();
    m_lists[lists] = &list;
}

void DrawnLists::rename(QTextList& list, const std::vector<TextListRef>& lists) {
    learn();
    if (const auto former = m_lists.find(listsOf(list));
        former != m_lists.end() && former->second == &list) {
        m_lists.erase(former);
    }
    list.setFormat(listFormatOf(lists));
    m_lists[lists] = &list;
}

void DrawnLists::learn() {
    if (m_isKnown) {
        return;
    }
    m_isKnown = true;
    std::unordered_set<const QTextList*> seen;
    for (auto block = m_document.begin(); block.isValid(); block = block.next()) {
        if (auto* const list = block.textList(); list && seen.insert(list).second) {
            m_lists.try_emplace(listsOf(*list), list);
        }
    }
}

} // namespace korvex::ui
