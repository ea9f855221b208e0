#include "ui/settings/BackupPlaces.h"

#include "ui/kit/overlays/FileQuestion.h"
#include "ui/kit/words/Text.h"

#include <QCoreApplication>

#include <utility>

namespace korvex::ui {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolderKey = "lastBackupFolder";
constexpr const char* kExtension = ".korvexbackup";

QString tr(const char* text) {
    return QCoreApplication::translate("korvex::ui::BackupPlaces", text);
}

QStringList filters() {
    return {tr("Korvex backups (*%1)").arg(QLatin1String(kExtension)), tr("All files (*)")};
}

fs::path completed(fs::path file) {
    std::error_code error;
    const auto isThere = [&error](const fs::path& each) {
        return fs::symlink_status(each, error).type() != fs::file_type::not_found;
    };
    auto whole = file;
    whole += kExtension;
    return file.extension() == kExtension || isThere(file) || isThere(whole) ? file : whole;
}

} // namespace

void BackupPlaces::fileToWrite(QWidget& asker, const QString& name, Receive receive) const {
    const FileQuestion question{.title = tr("Export backup"),
                                .kind = FileQuestion::Kind::fileToWrite,
                                .folder = lastFolder(),
                                .name = name + QLatin1String(kExtension),
                                .filters = filters()};
    question.ask(asker, [this, receive = std::move(receive)](const auto& files) {
        remember(files.front().parent_path());
        receive(completed(files.front()));
    });
}

void BackupPlaces::fileToRead(QWidget& asker, Receive receive) const {
    const FileQuestion question{.title = tr("Import backup"),
                                .kind = FileQuestion::Kind::fileToRead,
                                .folder = lastFolder(),
                                .filters = filters()};
    question.ask(asker, [this, receive = std::move(receive)](const auto& files) {
        remember(files.front().parent_path());
        receive(files.front());
    });
}

void BackupPlaces::folder(QWidget& asker, const QString& title, Receive receive) const {
    const FileQuestion question{
        .title = title, .kind = FileQuestion::Kind::folder, .folder = lastFolder()};
    question.ask(asker, [this, receive = std::move(receive)](const auto& files) {
        remember(files.front());
        receive(files.front());
    });
}

QString BackupPlaces::lastFolder() const {
    const auto bytes = m_defaults.bytes(kFolderKey);
    return bytes ? toFileName(std::string(bytes->begin(), bytes->end())) : QString();
}

void BackupPlaces::remember(const fs::path& folder) const {
    const auto& path = folder.native();
    m_defaults.setBytes(kFolderKey, {path.begin(), path.end()});
}

} // namespace korvex::ui
