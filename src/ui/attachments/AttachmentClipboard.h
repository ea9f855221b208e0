#pragma once

#include "model/EntryAttachment.h"
#include "services/AttachmentList.h"

#include <QMimeData>
#include <QString>

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace korvex::ui {

/// A drag of an attachment from one entry to another: which of which entry.
struct DraggedAttachment {
    base::Uuid entry;
    base::Uuid attachment;
};
inline constexpr const char* kAttachmentMoveType = "dev.korvex.attachment-move";
std::optional<DraggedAttachment> draggedAttachment(const QMimeData& data);

/// "Pasted image.png", or the first of "Pasted image 2.png" and so on that the list does not have.
std::string pastedImageName(const services::AttachmentList& list);

/// Offers a file to other programs, and with `moved` an attachment to the entries of this one. The
/// file is asked for when somebody wants it; an empty path when there is none after all.
class AttachmentMimeData final : public QMimeData {
    Q_OBJECT

public:
    using MakeFile = std::function<std::filesystem::path()>;
    AttachmentMimeData(MakeFile makeFile, const std::optional<DraggedAttachment>& moved);

    QStringList formats() const override;
    bool hasFormat(const QString& type) const override;

protected:
    QVariant retrieveData(const QString& type, QMetaType metaType) const override;

private:
    MakeFile m_makeFile;
    mutable std::optional<QByteArray> m_url;
};

} // namespace korvex::ui
