#include "ui/attachments/AttachmentKind.h"

#include "ui/kit/words/Text.h"

#include <QMimeDatabase>

#include <array>
#include <string_view>

namespace korvex::ui {

namespace {

struct Family {
    std::string_view prefix;
    AttachmentKind kind;
};
/// The first that fits decides.
constexpr std::array kFamilies{
    Family{"image/", AttachmentKind::picture},
    Family{"audio/", AttachmentKind::sound},
    Family{"video/", AttachmentKind::film},
    Family{"application/pdf", AttachmentKind::pdf},
    Family{"application/msword", AttachmentKind::document},
    Family{"application/rtf", AttachmentKind::document},
    Family{"application/epub", AttachmentKind::document},
    Family{"application/vnd.oasis.opendocument.text", AttachmentKind::document},
    Family{"application/vnd.openxmlformats-officedocument.word", AttachmentKind::document},
    Family{"application/vnd.oasis.opendocument.spreadsheet", AttachmentKind::sheet},
    Family{"application/vnd.openxmlformats-officedocument.spreadsheet", AttachmentKind::sheet},
    Family{"application/vnd.ms-excel", AttachmentKind::sheet},
    Family{"text/csv", AttachmentKind::sheet},
    Family{"application/vnd.oasis.opendocument.presentation", AttachmentKind::slides},
    Family{"application/vnd.openxmlformats-officedocument.presentation", AttachmentKind::slides},
    Family{"application/vnd.ms-powerpoint", AttachmentKind::slides},
    Family{"application/zip", AttachmentKind::archive},
    Family{"application/gzip", AttachmentKind::archive},
    Family{"application/vnd.rar", AttachmentKind::archive},
    Family{"application/x-7z", AttachmentKind::archive},
    Family{"application/x-tar", AttachmentKind::archive},
    Family{"application/x-compressed", AttachmentKind::archive},
    Family{"application/x-bzip", AttachmentKind::archive},
    Family{"application/x-xz", AttachmentKind::archive},
    Family{"application/zstd", AttachmentKind::archive},
    Family{"application/json", AttachmentKind::code},
    Family{"application/xml", AttachmentKind::code},
    Family{"application/javascript", AttachmentKind::code},
    Family{"text/html", AttachmentKind::code},
    Family{"text/css", AttachmentKind::code},
    Family{"text/x-", AttachmentKind::code},
    Family{"text/", AttachmentKind::text},
};

} // namespace

AttachmentKind attachmentKind(const std::string& filename) {
    const auto type = QMimeDatabase()
                          .mimeTypeForFile(toQString(filename), QMimeDatabase::MatchExtension)
                          .name()
                          .toStdString();
    for (const auto& family : kFamilies) {
        if (std::string_view(type).starts_with(family.prefix)) {
            return family.kind;
        }
    }
    return AttachmentKind::other;
}

QString iconNameOf(AttachmentKind kind) {
    switch (kind) {
    case AttachmentKind::other:
        return QStringLiteral("file");
    case AttachmentKind::text:
        return QStringLiteral("file-text");
    case AttachmentKind::pdf:
        return QStringLiteral("file-pdf");
    case AttachmentKind::document:
        return QStringLiteral("file-doc");
    case AttachmentKind::sheet:
        return QStringLiteral("file-xls");
    case AttachmentKind::slides:
        return QStringLiteral("file-ppt");
    case AttachmentKind::picture:
        return QStringLiteral("file-image");
    case AttachmentKind::sound:
        return QStringLiteral("file-audio");
    case AttachmentKind::film:
        return QStringLiteral("file-video");
    case AttachmentKind::archive:
        return QStringLiteral("file-archive");
    case AttachmentKind::code:
        return QStringLiteral("file-code");
    }
    return {};
}

} // namespace korvex::ui
