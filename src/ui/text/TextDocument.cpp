#include "ui/text/TextDocument.h"

namespace korvex::ui {

namespace {

/// A list that knows how many items it has, and no more. Whoever changes one marks it as changed.
class CountingList final : public QTextList {
public:
    using QTextList::QTextList;

    int items() const { return m_items; }

protected:
    void blockInserted(const QTextBlock&) override { ++m_items; }
    void blockRemoved(const QTextBlock&) override { --m_items; }

private:
    int m_items = 0;
};

} // namespace

QTextObject* TextDocument::createObject(const QTextFormat& format) {
    return format.isListFormat() ? new CountingList(this) : QTextDocument::createObject(format);
}

int itemCountOf(const QTextList& list) {
    const auto* const counting = dynamic_cast<const CountingList*>(&list);
    return counting ? counting->items() : list.count();
}

} // namespace korvex::ui
