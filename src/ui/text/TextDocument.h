#pragma once

#include <QTextDocument>
#include <QTextList>

namespace korvex::ui {

/// The document that formatted texts are shown and edited in. Qt's own lists mark all their items
/// as changed whenever one comes or goes, which takes seconds where thousands do; those of this
/// document mark none, since the numbers are drawn by `paintUnderText`, which counts. So
/// `QTextList::count` and `itemNumber` say nothing here. Main thread.
class TextDocument final : public QTextDocument {
public:
    using QTextDocument::QTextDocument;

protected:
    QTextObject* createObject(const QTextFormat& format) override;
};

/// How many paragraphs are items of a list, in whatever document.
int itemCountOf(const QTextList& list);

} // namespace korvex::ui
