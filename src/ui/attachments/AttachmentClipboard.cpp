#include "ui/attachments/AttachmentClipboard.h"

#include "ui/kit/words/Text.h"

#include <QCoreApplication>
#include <QUrl>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr const char* kUriListType = "text/uri-list";
/// What file managers of the GNOME family paste as files.
constexpr const char* kCopiedFilesType = "x-special/gnome-copied-files";

} // namespace

std::optional<DraggedAttachment> draggedAttachment(const QMimeData& data) {
    const auto parts = data.data(QLatin1String(kAttachmentMoveType)).split('\n');
    if (parts.size() != 2) {
        return std::nullopt;
    }
    const auto entry = base::Uuid::parse(parts[0].toStdString());
    const auto attachment = base::Uuid::parse(parts[1].toStdString());
    return entry && attachment ? std::optional(DraggedAttachment{*entry, *attachment})
                               : std::nullopt;
}

std::string pastedImageName(const services::AttachmentList& list) {
    const auto stem = QCoreApplication::translate("korvex::ui::AttachmentActions", "Pasted image");
    const auto isTaken = [&](const std::string& name) {
        return std::any_of(list.attachments.begin(), list.attachments.end(),
                           [&](const auto& each) { return each.filename == name; });
    };
    auto name = toUtf8(stem + QStringLiteral(".png"));
    for (int number = 2; isTaken(name); ++number) {
        name = toUtf8(QStringLiteral("%1 %2.png").arg(stem).arg(number));
    }
    return name;
}

AttachmentMimeData::AttachmentMimeData(MakeFile makeFile,
                                       const std::optional<DraggedAttachment>& moved)
    : m_makeFile(std::move(makeFile)) {
    if (moved) {
        setData(QLatin1String(kAttachmentMoveType),
                QByteArray::fromStdString(moved->entry.text() + '\n' + moved->attachment.text()));
    }
}

QStringList AttachmentMimeData::formats() const {
    return QMimeData::formats() << QLatin1String(kUriListType) << QLatin1String(kCopiedFilesType);
}

bool AttachmentMimeData::hasFormat(const QString& type) const {
    return formats().contains(type);
}

QVariant AttachmentMimeData::retrieveData(const QString& type, QMetaType metaType) const {
    const auto isCopiedFiles = type == QLatin1String(kCopiedFilesType);
    if (!isCopiedFiles && type != QLatin1String(kUriListType)) {
        return QMimeData::retrieveData(type, metaType);
    }
    if (!m_url) {
        const auto file = m_makeFile();
        m_url = file.empty() ? QByteArray() : QUrl::fromLocalFile(toFileName(file)).toEncoded();
    }
    if (m_url->isEmpty()) {
        return {};
    }
    return isCopiedFiles ? "copy\n" + *m_url : *m_url + "\r\n";
}

} // namespace korvex::ui
