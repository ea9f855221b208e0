#include "ui/text/TextDocument.h"

namespace korvex::ui {

namespace {

/// A list that knows how many items it has, and no more: items are marked as changed by their own
/// formats, which have their depth. Qt would delete a list that lost its last item; this one stays,
/// a few bytes that an undo takes up again, until the document is cleared.
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
