#include "ui/windows/PageStack.h"

namespace korvex::ui {

PageStack::PageStack(QWidget* parent) : QStackedWidget(parent) {}

void PageStack::add(PageKind kind, MakePage make) {
    m_pages.emplace(kind, Slot{std::move(make), nullptr});
}

void PageStack::show(PageKind kind) {
    auto& slot = m_pages.at(kind);
    if (!slot.page) {
        slot.page = slot.make();
        addWidget(slot.page);
    }
    const auto wasShown = currentWidget() == slot.page && m_current == kind;
    m_current = kind;
    if (!wasShown) {
        slot.page->storeChanged();
    }
    setCurrentWidget(slot.page);
}

} // namespace korvex::ui
