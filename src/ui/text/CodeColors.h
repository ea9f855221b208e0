#pragma once

#include "base/Signal.h"
#include "richtext/code/CodeHighlighter.h"
#include "ui/text/TextLook.h"

#include <QObject>
#include <QTextDocument>
#include <QTimer>

#include <optional>

namespace korvex::ui {

/// Colours the code of a document as far as its colours are known, and asks for the others. Colours
/// are no change of the document: they are neither read nor undone, and what has none yet keeps
/// those that it had. False while some are awaited; then it is to be called again when the
/// highlighter's `arrived` comes. Main thread, at most some milliseconds.
bool colorCode(QTextDocument& document, richtext::CodeHighlighter& code, const TextLook& look);

/// Keeps the code of a document coloured while it is edited. Main thread; document and highlighter
/// must outlive it.
class CodeColors final : public QObject {
    Q_OBJECT

public:
    CodeColors(QTextDocument& document, richtext::CodeHighlighter& code, const TextLook& look,
               QObject* parent = nullptr);

    /// Colours anew, for another appearance.
    void setLook(const TextLook& look);
    /// Colours what it can at once, for a text that is new as a whole.
    void update();

private:
    void moveColors(int position, int removed, int added);

    QTextDocument& m_document;
    richtext::CodeHighlighter& m_code;
    TextLook m_look;
    bool m_isWaiting = false;
    QTimer m_pause;
    base::Subscription m_arrivals;
};

} // namespace korvex::ui
