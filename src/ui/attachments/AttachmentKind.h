#pragma once

#include <QString>

#include <string>

namespace korvex::ui {

/// What a file is to the person who sees its name.
enum class AttachmentKind {
    other,
    text,
    pdf,
    document,
    sheet,
    slides,
    picture,
    sound,
    film,
    archive,
    code
};

/// Judged by the name alone, in some microseconds; only the first call reads the system's types.
AttachmentKind attachmentKind(const std::string& filename);
QString iconNameOf(AttachmentKind kind);

} // namespace korvex::ui
