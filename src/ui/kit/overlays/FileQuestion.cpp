#include "ui/kit/overlays/FileQuestion.h"

#include "ui/kit/words/Text.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

#include <utility>

namespace korvex::ui {

namespace {

/// The dialog takes what is no folder for the name of a file.
QString documents() {
    const auto folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return !folder.isEmpty() && QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

QFileDialog::FileMode modeOf(FileQuestion::Kind kind) {
    switch (kind) {
    case FileQuestion::Kind::fileToWrite:
        return QFileDialog::AnyFile;
    case FileQuestion::Kind::fileToRead:
        return QFileDialog::ExistingFile;
    case FileQuestion::Kind::filesToRead:
        return QFileDialog::ExistingFiles;
    case FileQuestion::Kind::folder:
        return QFileDialog::Directory;
    }
    return {};
}

/// The desktop may give the keyboard to no window when its dialog closes.
void giveKeyboardBack(QFileDialog& dialog, QWidget& asker) {
    auto* const window = asker.window();
    const QPointer<QWidget> last(asker.focusPolicy() == Qt::NoFocus ? window->focusWidget()
                                                                    : &asker);
    QObject::connect(&dialog, &QDialog::finished, window, [window, last] {
        window->activateWindow();
        if (last) {
            last->setFocus();
        }
    });
}

} // namespace

void FileQuestion::ask(QWidget& asker, Receive receive) const {
    auto* const dialog =
        new QFileDialog(asker.window(), title, folder.isEmpty() ? documents() : folder);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(modeOf(kind));
    dialog->setOption(QFileDialog::ShowDirsOnly, kind == Kind::folder);
    if (!filters.isEmpty()) {
        dialog->setNameFilters(filters);
    }
    if (kind == Kind::fileToWrite) {
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        dialog->selectFile(name);
    }
    giveKeyboardBack(*dialog, asker);
    QObject::connect(dialog, &QFileDialog::filesSelected, &asker,
                     [receive = std::move(receive)](const QStringList& chosen) {
                         std::vector<std::filesystem::path> files;
                         for (const auto& each : chosen) {
                             files.push_back(toPath(each));
                         }
                         receive(files);
                     });
    dialog->open();
}

} // namespace korvex::ui
