#include "ui/windows/PageStack.h"

namespace korvex::ui {

PageStack::PageStack(QWidget* parent) : QStackedWidget(parent) {}

void PageStack::add(PageKind kind, MakePage make) {
    m_pages.emplace(kind, Slot{std::move(make), nullptr});
}

bool PageStack::show(PageKind kind) {
    auto* const shown = m_pages.at(m_current).page;
    if (shown && kind == m_current) {
        return true;
    }
    if (shown && !shown->leave()) {
        return false;
    }
    auto& slot = m_pages.at(kind);
    if (!slot.page) {
        slot.page = slot.make();
        addWidget(slot.page);
        connect(slot.page, &Page::undoRequested, this, &PageStack::undoRequested);
    }
    m_current = kind;
    slot.page->storeChanged();
    setCurrentWidget(slot.page);
    return true;
}

} // namespace korvex::ui
