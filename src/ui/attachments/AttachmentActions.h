#pragma once

#include "base/Clock.h"
#include "model/EntryPlacement.h"
#include "model/EntryType.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/AttachmentFiles.h"
#include "services/EntryService.h"
#include "services/TemporaryAttachmentCopies.h"
#include "store/ModelContext.h"
#include "ui/workspace/FolderLook.h"

#include <QObject>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QMenu;
class QMimeData;

namespace korvex::ui {

/// What can be done with attachments, wherever it is asked for. Dialogs belong to `page`. Main
/// thread.
class AttachmentActions final : public QObject {
    Q_OBJECT

public:
    /// What the actions work with; all of it outlives them.
    struct Services {
        store::ModelContext& context;
        services::EntryService& entries;
        const richtext::RichTextSerializer& serializer;
        services::TemporaryAttachmentCopies& copies;
        const base::Clock& clock;
        storage::BackgroundThreads& threads;
        base::RunLoop& runLoop;
    };
    AttachmentActions(const Services& services, QWidget& page);

    /// Opens it with the program that the system has for such files.
    void open(const model::Entry& entry, const base::Uuid& id);
    /// Copies it as a file, for file managers and for other entries.
    void copy(const model::Entry& entry, const base::Uuid& id);
    void remove(model::Entry& entry, const base::Uuid& id);
    void move(const base::Uuid& id, model::Entry& from, model::Entry& to,
              const std::optional<base::Uuid>& relativeTo, model::EntryPlacement placement);
    /// Moves it by a place to the left (-1) or to the right (1) within its entry, if there is one.
    void moveBy(int offset, const base::Uuid& id, model::Entry& entry);

    using Files = std::vector<std::filesystem::path>;
    /// Asks the user for files, and attaches them.
    void chooseFiles(model::Entry& entry);
    /// Asks the user for files, for somebody who knows then what to attach them to.
    void chooseFiles(std::function<void(const Files&)> receive);
    void attachFiles(const Files& files, model::Entry& entry);
    /// Attaches the files or the picture that are offered; does nothing when `isForAttaching` says
    /// no.
    void attachOffered(const QMimeData& offered, model::Entry& entry);
    bool canAttachTo(const model::Entry& entry) const;

    /// What another program or another entry can take of it.
    std::unique_ptr<QMimeData> dragged(const model::Entry& entry, const base::Uuid& id);

    /// The items of one attachment, perhaps with the keys that its chip listens to.
    enum class ShowKeys { no, yes };
    void addItems(QMenu& menu, model::Entry& entry, const base::Uuid& id, ShowKeys showKeys);
    /// The attachments of an entry with their items, one below the other; nothing where there are
    /// none.
    void addAttachments(QMenu& menu, model::Entry& entry);

Q_SIGNALS:
    void done();
    /// Something was not done, for this reason in words for the user.
    void refused(const QString& message);

private:
    /// What is on an archived board is only looked at, as is all of a store that cannot be written.
    bool isReadOnly(const model::Entry& entry) const;
    /// Runs an operation and tells how it went; true when it was done.
    template <typename Operation>
    bool perform(Operation&& operation);
    template <typename Action>
    auto later(const model::Entry& entry, Action&& action);
    std::filesystem::path temporaryCopy(const base::Uuid& entry, const base::Uuid& id);
    /// Asks for a file, and writes it whole or not at all.
    void saveAs(const model::Entry& entry, const base::Uuid& id);
    void save(const base::Uuid& entry, const base::Uuid& id, const std::filesystem::path& file);

    Services m_services;
    QWidget& m_page;
    /// The folder where the user saved or chose files last.
    QString m_folder;
    FolderLook m_look;
};

} // namespace korvex::ui
