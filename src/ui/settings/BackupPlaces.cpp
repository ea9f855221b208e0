#include "ui/settings/BackupPlaces.h"

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

} // namespace

void BackupPlaces::fileToWrite(QWidget& asker, const QString& name, Receive receive) {
    askForFile({.title = tr("Export backup"),
                .kind = FileQuestion::Kind::fileToWrite,
                .name = name + QLatin1String(kExtension),
                .filters = filters()},
               asker, std::move(receive));
}

void BackupPlaces::fileToRead(QWidget& asker, Receive receive) {
    askForFile({.title = tr("Import backup"),
                .kind = FileQuestion::Kind::fileToRead,
                .filters = filters()},
               asker, std::move(receive));
}

void BackupPlaces::folder(QWidget& asker, const QString& title, Receive receive) {
    ask({.title = title, .kind = FileQuestion::Kind::folder}, asker,
        [this, receive = std::move(receive)](const fs::path& folder) {
            remember(folder);
            receive(folder);
        });
}

void BackupPlaces::askForFile(FileQuestion question, QWidget& asker, Receive receive) {
    ask(std::move(question), asker, [this, receive = std::move(receive)](const fs::path& file) {
        remember(file.parent_path());
        receive(file);
    });
}

void BackupPlaces::ask(FileQuestion question, QWidget& asker, Receive receive) {
    question.folder = lastFolder();
    m_look.ask(std::move(question), asker,
               [receive = std::move(receive)](const auto& files) { receive(files.front()); });
}

fs::path BackupPlaces::completed(fs::path chosen) {
    std::error_code error;
    const auto isThere = [&error](const fs::path& each) {
        return fs::symlink_status(each, error).type() != fs::file_type::not_found;
    };
    auto whole = chosen;
    whole += kExtension;
    return chosen.extension() == kExtension || isThere(chosen) || isThere(whole) ? chosen : whole;
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
