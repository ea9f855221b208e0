#pragma once

#include "base/Uuid.h"
#include "model/Entry.h"
#include "ui/kit/overlays/Popover.h"

#include <QImage>
#include <QPointer>
#include <QThreadPool>

namespace korvex::ui {

/// A picture as it was decoded for looking at.
struct PreviewPicture {
    /// No larger than asked for; null when the file is no picture, or one that is too large.
    QImage image;
    /// The size of the picture in the file.
    QSize fullSize;
};
/// Judges the file by what it holds. Any thread; the time grows with the picture.
PreviewPicture decodePreview(const QByteArray& file, const QSize& room);

/// Shows attached pictures beside their chips, one at a time. They are decoded on another thread: a
/// large one comes a little later, and holds nothing up. Main thread.
class AttachmentPreview final : public QObject {
    Q_OBJECT

public:
    AttachmentPreview(const Theme& theme, QWidget& view);
    ~AttachmentPreview() override;

    /// Whether the attachment may be a picture, by its name; if so it is shown when it is decoded
    /// and turns out to be one. `anchor` in global coordinates.
    bool show(const model::Entry& entry, const base::Uuid& id, const QRect& anchor);
    void hide();
    bool isShown() const { return !m_shown.isNull(); }

private:
    void showPicture(const PreviewPicture& picture, const QString& name, const QRect& anchor);

    const Theme& m_theme;
    QWidget& m_view;
    QPointer<Popover> m_shown;
    /// Counts what was asked for, so that what comes late is not shown.
    int m_request = 0;
    QThreadPool m_threads;
};

} // namespace korvex::ui
