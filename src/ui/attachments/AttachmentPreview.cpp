#include "ui/attachments/AttachmentPreview.h"

#include "services/AttachmentList.h"
#include "ui/attachments/AttachmentChips.h"
#include "ui/attachments/AttachmentKind.h"
#include "ui/kit/words/Refusal.h"

#include <QBuffer>
#include <QFuture>
#include <QImageReader>
#include <QLabel>
#include <QPromise>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kWidest = 360;
constexpr int kHighest = 280;
constexpr qint64 kMaximumPixels = 100'000'000;
/// Formats that only hold pixels: no other can refer to files or run long on little input.
constexpr std::array kFormats{"png", "jpeg", "gif", "bmp", "webp"};

bool isKnownFormat(const QByteArray& format) {
    return std::any_of(kFormats.begin(), kFormats.end(),
                       [&](const char* known) { return format == known; });
}

} // namespace

PreviewPicture decodePreview(const QByteArray& file, const QSize& room) {
    QBuffer buffer;
    buffer.setData(file);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    if (!isKnownFormat(reader.format())) {
        return {};
    }
    auto size = reader.size();
    if (!size.isValid() || qint64{size.width()} * size.height() > kMaximumPixels) {
        return {};
    }
    // How it lies in the file need not be how it is looked at.
    reader.setAutoTransform(true);
    const auto isTurned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const auto place = isTurned ? room.transposed() : room;
    if (size.width() > place.width() || size.height() > place.height()) {
        reader.setScaledSize(size.scaled(place, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    }
    auto image = reader.read();
    return {.image = std::move(image), .fullSize = isTurned ? size.transposed() : size};
}

AttachmentPreview::AttachmentPreview(const Theme& theme, QWidget& view)
    : m_theme(theme), m_view(view) {
    m_threads.setMaxThreadCount(1);
}

AttachmentPreview::~AttachmentPreview() {
    m_threads.clear();
    m_threads.waitForDone();
}

bool AttachmentPreview::show(const model::Entry& entry, const base::Uuid& id, const QRect& anchor) {
    hide();
    std::optional<model::EntryAttachment> file;
    // A preview that cannot be had is no error that concerns anybody.
    if (refusal([&] { file = services::attachment(entry, id); }) || !file ||
        attachmentKind(file->filename) != AttachmentKind::picture) {
        return false;
    }
    const auto promise = std::make_shared<QPromise<PreviewPicture>>();
    const auto name = shownFilename(file->filename);
    promise->future().then(
        this, [this, name, anchor, request = m_request](const PreviewPicture& picture) {
            if (request == m_request && !picture.image.isNull()) {
                showPicture(picture, name, anchor);
            }
        });
    const auto room =
        QSize(m_theme.scaled(kWidest), m_theme.scaled(kHighest)) * m_view.devicePixelRatioF();
    m_threads.start([promise, room,
                     bytes = QByteArray(reinterpret_cast<const char*>(file->data.data()),
                                        static_cast<qsizetype>(file->data.size()))] {
        promise->start();
        promise->addResult(decodePreview(bytes, room));
        promise->finish();
    });
    return true;
}

void AttachmentPreview::hide() {
    ++m_request;
    m_threads.clear();
    if (m_shown) {
        m_shown->closeNow();
        m_shown = nullptr;
    }
}

void AttachmentPreview::showPicture(const PreviewPicture& picture, const QString& name,
                                    const QRect& anchor) {
    auto* const popover = new Popover(m_theme, m_view.window());
    popover->setObjectName(QStringLiteral("attachmentPreview"));
    popover->setFocusPolicy(Qt::NoFocus);
    // The pointer is on the chip, wherever this stands.
    popover->setAttribute(Qt::WA_TransparentForMouseEvents);
    popover->setAccessibleName(name);
    auto* const column = new QVBoxLayout(popover);
    const auto margin = m_theme.space(Space::medium);
    column->setContentsMargins(margin, margin, margin, margin);
    auto* const label = new QLabel(popover);
    auto pixmap = QPixmap::fromImage(picture.image);
    pixmap.setDevicePixelRatio(m_view.devicePixelRatioF());
    label->setPixmap(pixmap);
    label->setAlignment(Qt::AlignCenter);
    auto* const size = new QLabel(tr("%1 × %2").arg(QLocale().toString(picture.fullSize.width()),
                                                    QLocale().toString(picture.fullSize.height())),
                                  popover);
    size->setFont(m_theme.smallFont());
    size->setForegroundRole(QPalette::PlaceholderText);
    column->addWidget(label);
    column->addWidget(size);
    m_shown = popover;
    popover->openAt(anchor);
}

} // namespace korvex::ui
