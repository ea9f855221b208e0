#include "ui/windows/PageStack.h"

namespace korvex::ui {

PageStack::PageStack(QWidget* parent) : QStackedWidget(parent) {}

void PageStack::add(PageKind kind, Page page) {
    m_pages.emplace(kind, Slot{std::move(page), nullptr});
}

void PageStack::show(PageKind kind) {
    auto& slot = m_pages.at(kind);
    if (!slot.widget) {
        slot.widget = slot.page.make();
        addWidget(slot.widget);
    }
    const bool wasShown = currentWidget() == slot.widget && m_current == kind;
    m_current = kind;
    if (!wasShown) {
        slot.page.storeChanged();
    }
    setCurrentWidget(slot.widget);
}

} // namespace korvex::ui
