#include "ui/settings/FileQuestion.h"

#include "ui/kit/words/Text.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QStandardPaths>

#include <utility>

namespace korvex::ui {

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("korvex::ui::FileQuestion", text);
}

QString extension() {
    return QStringLiteral("korvexbackup");
}

QFileDialog* makeDialog(QWidget& asker, const QString& title, FileQuestion::Receive receive) {
    auto* const dialog = new QFileDialog(
        asker.window(), title, QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(
        dialog, &QFileDialog::fileSelected, &asker,
        [receive = std::move(receive)](const QString& file) { receive(toPath(file)); });
    return dialog;
}

QFileDialog* makeBackupDialog(QWidget& asker, const QString& title, FileQuestion::Receive receive) {
    auto* const dialog = makeDialog(asker, title, std::move(receive));
    dialog->setNameFilters({tr("Korvex backups (*.%1)").arg(extension()), tr("All files (*)")});
    dialog->setDefaultSuffix(extension());
    return dialog;
}

} // namespace

void FileQuestion::backupToWrite(QWidget& asker, const QString& name, Receive receive) {
    auto* const dialog = makeBackupDialog(asker, tr("Export backup"), std::move(receive));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->selectFile(name + QLatin1Char('.') + extension());
    dialog->open();
}

void FileQuestion::backupToRead(QWidget& asker, Receive receive) {
    auto* const dialog = makeBackupDialog(asker, tr("Import backup"), std::move(receive));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->open();
}

void FileQuestion::folder(QWidget& asker, const QString& title, Receive receive) {
    auto* const dialog = makeDialog(asker, title, std::move(receive));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->open();
}

} // namespace korvex::ui
