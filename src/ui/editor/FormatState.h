#pragma once

#include "richtext/text/HeadingLevel.h"
#include "ui/editor/ListEditing.h"

#include <QString>
#include <QTextCursor>

#include <optional>

namespace korvex::ui {

/// What the selection, or what is typed at the caret, looks like; the controls show it.
struct FormatState {
    std::optional<richtext::HeadingLevel> heading;
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruckThrough = false;
    /// Code is inline or a block; `codeLanguage` is the identifier of its language.
    bool isCode = false;
    bool isCodeBlock = false;
    QString codeLanguage;
    ListKind list = ListKind::none;
    bool isInTable = false;
    QString link;

    bool operator==(const FormatState&) const = default;
};

/// What the selection is: bold, italic, underlined and struck through when all of it is; the rest
/// is said of its first character. Main thread.
FormatState formatStateOf(const QTextCursor& cursor);

} // namespace korvex::ui
