#include "ui/attachments/AttachmentActions.h"

#include "base/FileReplacement.h"
#include "model/ServiceErrors.h"
#include "richtext/stored/EntryText.h"
#include "services/AttachmentList.h"
#include "store/ModelContainer.h"
#include "ui/attachments/AttachmentChips.h"
#include "ui/attachments/AttachmentClipboard.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"
#include "ui/text/OfferedFiles.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QMenu>
#include <QStandardPaths>
#include <QUrl>

#include <algorithm>

namespace korvex::ui {

using model::AttachmentError;
using model::AttachmentErrorCase;

namespace {

constexpr const char* kDomain = "Korvex.AttachmentActions";

base::Error failure(const QString& message) {
    return {kDomain, 0, toUtf8(message)};
}

model::EntryAttachment found(std::optional<model::EntryAttachment> attachment) {
    if (!attachment) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable);
    }
    return std::move(*attachment);
}

QString reasonOf(const std::error_code& error) {
    return QString::fromLocal8Bit(error.message().c_str());
}

} // namespace

AttachmentActions::AttachmentActions(const Services& services, QWidget& page)
    : QObject(&page),
      m_services(services),
      m_page(page),
      m_folder(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation)),
      m_look(services.threads, services.runLoop) {}

template <typename Operation>
bool AttachmentActions::perform(Operation&& operation) {
    const auto message = refusal(operation);
    if (message) {
        Q_EMIT refused(*message);
    } else {
        Q_EMIT done();
    }
    return !message;
}

/// While a menu or a dialog is open the entry may go.
template <typename Action>
auto AttachmentActions::later(const model::Entry& entry, Action&& action) {
    return [this, id = entry.id(), action](const auto&... arguments) {
        if (auto* const still = m_services.context.find<model::Entry>(id)) {
            action(*still, arguments...);
        }
    };
}

void AttachmentActions::open(const model::Entry& entry, const base::Uuid& id) {
    perform([&] {
        const auto file = temporaryCopy(entry.id(), id);
        const auto name = toFileName(file);
        if (!QDesktopServices::openUrl(QUrl::fromLocalFile(name))) {
            throw failure(
                tr("No program was found that opens “%1”.").arg(QFileInfo(name).fileName()));
        }
    });
}

void AttachmentActions::saveAs(const model::Entry& entry, const base::Uuid& id) {
    QString name;
    if (!perform([&] { name = toQString(found(services::attachment(entry, id)).filename); })) {
        return;
    }
    m_look.ask({.title = tr("Save attachment"),
                .kind = FileQuestion::Kind::fileToWrite,
                .folder = m_folder,
                .name = name},
               m_page, [this, entryID = entry.id(), id](const Files& files) {
                   save(entryID, id, files.front());
               });
}

void AttachmentActions::save(const base::Uuid& entry, const base::Uuid& id,
                             const std::filesystem::path& file) {
    m_folder = toFileName(file.parent_path());
    perform([&] {
        const auto* const holder = m_services.context.find<model::Entry>(entry);
        const auto attachment = found(holder ? services::attachment(*holder, id) : std::nullopt);
        const std::string_view bytes(reinterpret_cast<const char*>(attachment.data.data()),
                                     attachment.data.size());
        if (const auto error = base::replaceFile(file, bytes)) {
            throw failure(tr("“%1” could not be saved: %2")
                              .arg(toFileName(file.filename()), reasonOf(error)));
        }
    });
}

void AttachmentActions::copy(const model::Entry& entry, const base::Uuid& id) {
    perform([&] {
        // Now: what is pasted later is what was copied, whatever becomes of the entry.
        auto file = temporaryCopy(entry.id(), id);
        QApplication::clipboard()->setMimeData(
            new AttachmentMimeData([file] { return file; }, std::nullopt));
    });
}

void AttachmentActions::remove(model::Entry& entry, const base::Uuid& id) {
    perform([&] { m_services.entries.removeAttachment(id, entry, m_services.clock.now()); });
}

void AttachmentActions::move(const base::Uuid& id, model::Entry& from, model::Entry& to,
                             const std::optional<base::Uuid>& relativeTo,
                             model::EntryPlacement placement) {
    perform([&] {
        m_services.entries.moveAttachment(id, from, to, relativeTo, placement,
                                          m_services.clock.now());
    });
}

void AttachmentActions::moveBy(int offset, const base::Uuid& id, model::Entry& entry) {
    perform([&] {
        const auto list = services::attachmentsOf(entry).attachments;
        const auto at =
            std::find_if(list.begin(), list.end(), [&](const auto& each) { return each.id == id; });
        const auto there = (at - list.begin()) + offset;
        if (at != list.end() && there >= 0 && there < std::ssize(list)) {
            m_services.entries.moveAttachment(
                id, entry, entry, list[static_cast<std::size_t>(there)].id,
                offset < 0 ? model::EntryPlacement::before : model::EntryPlacement::after,
                m_services.clock.now());
        }
    });
}

void AttachmentActions::chooseFiles(model::Entry& entry) {
    chooseFiles(later(
        entry, [this](model::Entry& still, const Files& files) { attachFiles(files, still); }));
}

void AttachmentActions::chooseFiles(std::function<void(const Files&)> receive) {
    m_look.ask(
        {.title = tr("Attach files"), .kind = FileQuestion::Kind::filesToRead, .folder = m_folder},
        m_page, [this, receive = std::move(receive)](const Files& files) {
            m_folder = toFileName(files.front().parent_path());
            receive(files);
        });
}

void AttachmentActions::attachFiles(const Files& files, model::Entry& entry) {
    perform([&] { m_services.entries.attachFiles(files, entry, m_services.clock.now()); });
}

void AttachmentActions::attachOffered(const QMimeData& offered, model::Entry& entry) {
    if (const auto files = offeredFiles(offered); !files.empty()) {
        attachFiles(files, entry);
        return;
    }
    if (!offered.hasImage()) {
        return;
    }
    perform([&] {
        auto picture = offeredPicture(offered);
        if (!picture) {
            throw failure(tr("The picture could not be read."));
        }
        std::vector<model::EntryAttachment> attachments;
        attachments.push_back({.id = base::Uuid::random(),
                               .filename = pastedImageName(services::attachmentsOf(entry)),
                               .data = std::move(*picture)});
        m_services.entries.attach(std::move(attachments), entry, m_services.clock.now());
    });
}

bool AttachmentActions::canAttachTo(const model::Entry& entry) const {
    bool can = false;
    static_cast<void>(refusal([&] {
        const auto list = services::attachmentsOf(entry);
        can = !isReadOnly(entry) && !list.isDamaged &&
              list.attachments.size() < model::EntryAttachment::kMaximumCount &&
              richtext::allowsAttachments(entry, m_services.serializer);
    }));
    return can;
}

bool AttachmentActions::isReadOnly(const model::Entry& entry) const {
    return !m_services.context.container().allowsSave() ||
           (entry.board() && entry.board()->isArchived());
}

std::unique_ptr<QMimeData> AttachmentActions::dragged(const model::Entry& entry,
                                                      const base::Uuid& id) {
    const auto makeFile = [this, entryID = entry.id(), id] {
        std::filesystem::path file;
        perform([&] { file = temporaryCopy(entryID, id); });
        return file;
    };
    return std::make_unique<AttachmentMimeData>(makeFile, DraggedAttachment{entry.id(), id});
}

void AttachmentActions::addItems(QMenu& menu, model::Entry& entry, const base::Uuid& id,
                                 ShowKeys showKeys) {
    const MenuItems items(menu, *this);
    const auto add = [&](const QString& text, const QKeySequence& keys, auto&& action) -> QAction& {
        return items.add(
            text, showKeys == ShowKeys::yes ? keys : QKeySequence(),
            later(entry, [action](model::Entry& still, const auto&...) { action(still); }));
    };
    add(tr("Open"), Qt::Key_Return, [this, id](const model::Entry& still) { open(still, id); });
    add(tr("Save as…"), {}, [this, id](const model::Entry& still) { saveAs(still, id); });
    add(tr("Copy"), QKeySequence::Copy, [this, id](const model::Entry& still) { copy(still, id); });
    menu.addSeparator();
    add(tr("Remove"), Qt::Key_Delete, [this, id](model::Entry& still) {
        remove(still, id);
    }).setEnabled(!isReadOnly(entry));
}

void AttachmentActions::addAttachments(QMenu& menu, model::Entry& entry) {
    services::AttachmentList list;
    if (refusal([&] { list = services::attachmentsOf(entry); }) || list.attachments.empty()) {
        return;
    }
    auto* const attachments = menu.addMenu(tr("Attachments"));
    for (const auto& each : list.attachments) {
        auto name = shownFilename(each.filename);
        addItems(*attachments->addMenu(name.replace(QLatin1Char('&'), QLatin1String("&&"))), entry,
                 each.id, ShowKeys::no);
    }
}

std::filesystem::path AttachmentActions::temporaryCopy(const base::Uuid& entry,
                                                       const base::Uuid& id) {
    const auto* const holder = m_services.context.find<model::Entry>(entry);
    const auto attachment = found(holder ? services::attachment(*holder, id) : std::nullopt);
    try {
        return m_services.copies.copy(attachment);
    } catch (const std::filesystem::filesystem_error& error) {
        throw failure(tr("“%1” could not be written for another program: %2")
                          .arg(shownFilename(attachment.filename), reasonOf(error.code())));
    }
}

} // namespace korvex::ui
