// ui_pictures FOLDER [--scale N] [--only SCENE]…: pictures of every scene in every variant of that
// scale (1 or 2), as FOLDER/VARIANT/SCENE.png.
//
// ui_pictures FOLDER --sheets: of those, a picture for each scene with all its variants, in
// FOLDER/sheets.
//
// ui_pictures FOLDER --readme: the pictures of the README, and its note as FOLDER/note.rtf.
//
// `tools/take-screenshots` runs all of it.

#include "ui/pictures/PicturedWindow.h"

#include "ui/kit/words/Language.h"
#include "ui/windows/StoreErrorWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QTemporaryFile>
#include <QThreadPool>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string_view>

namespace {

using namespace korvex;
using tests::PicturedWindow;
using tests::Variant;
using Appearance = app::AppPreferences::Appearance;
using Contrast = ui::Theme::SystemContrast;

/// Every value of each property meets every scene, as far as it can be shown in an empty store; all
/// their combinations would be thousands.
constexpr std::array kVariants{
    Variant{.name = "light"},
    Variant{.name = "dark-small-wide-full",
            .appearance = Appearance::dark,
            .fontSize = 10,
            .size = {1600, 900},
            .fill = Variant::Fill::full},
    Variant{.name = "light-contrast-large-mirrored",
            .contrast = Contrast::high,
            .fontSize = 24,
            .size = {960, 800},
            .direction = Qt::RightToLeft},
    Variant{.name = "light-large-narrow-mirrored-full",
            .fontSize = 24,
            .size = {360, 700},
            .direction = Qt::RightToLeft,
            .fill = Variant::Fill::full},
    Variant{.name = "dark-contrast-narrow-sharp",
            .appearance = Appearance::dark,
            .contrast = Contrast::high,
            .size = {360, 640},
            .scale = 2},
    Variant{.name = "dark-wide-empty-sharp",
            .appearance = Appearance::dark,
            .size = {1600, 700},
            .fill = Variant::Fill::empty,
            .scale = 2},
};

/// So large is the screen: menus and choice lists stay on it.
constexpr QSize kScreen(1'600, 900);

constexpr QSize kCell(900, 620);
constexpr int kColumns = 3;
constexpr int kLabel = 24;
constexpr int kGap = 12;

/// Set by whoever cannot write a picture.
std::atomic<bool> hasFailed = false;

void save(const QImage& picture, const QString& file) {
    QDir().mkpath(QFileInfo(file).path());
    QThreadPool::globalInstance()->start([picture, file] {
        constexpr int kQuickly = 80;
        if (!picture.save(file, "PNG", kQuickly)) {
            std::fprintf(stderr, "%s cannot be written\n", qPrintable(file));
            hasFailed = true;
        }
    });
}

QString fileOf(const QDir& folder, const QString& variant, const QString& scene) {
    return folder.filePath(variant + QLatin1Char('/') + scene + QStringLiteral(".png"));
}

/// As Qt's platform without a screen reads it; what is not said is as usual.
void describeScreen(QTemporaryFile& file, int scale) {
    const QJsonObject screen{{"width", scale * kScreen.width()},
                             {"height", scale * kScreen.height()},
                             {"logicalDpi", 96},
                             {"dpr", 1}};
    const auto text = QJsonDocument(QJsonObject{{"screens", QJsonArray{screen}}}).toJson();
    if (!file.open() || file.write(text) != text.size() || !file.flush()) {
        throw std::runtime_error("the screen cannot be described");
    }
}

/// Such a store has no main window.
void takeStoreError(const ui::Theme& theme, const QString& file) {
    ui::StoreErrorWindow window(QStringLiteral("Korvex"),
                                QStringLiteral("The store is damaged. Nothing was changed."),
                                "/var/notes/Primary.store", theme);
    window.show();
    QApplication::processEvents();
    save(window.grab().toImage(), file);
}

void takeAll(const QDir& folder, int scale, const QStringList& only) {
    for (const auto& variant : kVariants) {
        if (variant.scale != scale) {
            continue;
        }
        const auto name = QString::fromLatin1(variant.name);
        PicturedWindow window(variant);
        for (const auto& scene : window.scenes().all()) {
            const auto sceneName = QString::fromStdString(scene.name);
            if (only.isEmpty() || only.contains(sceneName)) {
                window.scenes().open(scene);
                save(window.picture(), fileOf(folder, name, sceneName));
                window.scenes().close();
            }
        }
        if (only.isEmpty()) {
            takeStoreError(window.theme(), fileOf(folder, name, QStringLiteral("store-error")));
            save(window.widget(), fileOf(folder, name, QStringLiteral("widget")));
            if (const auto gallery = window.gallery(); !gallery.isNull()) {
                save(gallery, fileOf(folder, name, QStringLiteral("gallery")));
            }
        }
    }
}

QImage sheetOf(const std::vector<std::pair<QString, QImage>>& pictures) {
    const auto rows = (static_cast<int>(pictures.size()) + kColumns - 1) / kColumns;
    const QSize step(kCell.width() + kGap, kCell.height() + kLabel + kGap);
    QImage sheet(kColumns * step.width() + kGap, rows * step.height() + kGap, QImage::Format_RGB32);
    sheet.fill(Qt::darkGray);
    QPainter painter(&sheet);
    painter.setPen(Qt::white);
    for (int i = 0; i < static_cast<int>(pictures.size()); ++i) {
        const QPoint corner(kGap + i % kColumns * step.width(),
                            kGap + i / kColumns * step.height());
        const auto& [name, picture] = pictures[static_cast<std::size_t>(i)];
        painter.drawText(QRect(corner, QSize(kCell.width(), kLabel)), Qt::AlignVCenter, name);
        const auto isTooLarge =
            picture.width() > kCell.width() || picture.height() > kCell.height();
        painter.drawImage(corner + QPoint(0, kLabel),
                          isTooLarge
                              ? picture.scaled(kCell, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                              : picture);
    }
    return sheet;
}

void makeSheets(const QDir& folder) {
    std::map<QString, std::vector<std::pair<QString, QImage>>> scenes;
    for (const auto& variant : kVariants) {
        const auto name = QString::fromLatin1(variant.name);
        for (const auto& file :
             QDir(folder.filePath(name)).entryInfoList({QStringLiteral("*.png")})) {
            QImage picture(file.filePath());
            picture.setDevicePixelRatio(1);
            scenes[file.completeBaseName()].emplace_back(name, picture);
        }
    }
    for (const auto& [scene, pictures] : scenes) {
        save(sheetOf(pictures), fileOf(folder, QStringLiteral("sheets"), scene));
    }
}

/// In both appearances, as they would stand side by side on a desktop.
QImage widgets() {
    std::vector<QImage> pictures;
    QSize size(kGap, 0);
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        pictures.push_back(PicturedWindow({.name = "widget", .appearance = appearance}).widget());
        size = {size.width() + pictures.back().width() + kGap, pictures.back().height() + 2 * kGap};
    }
    QImage both(size, QImage::Format_RGB32);
    both.fill(Qt::gray);
    QPainter painter(&both);
    int left = kGap;
    for (const auto& picture : pictures) {
        painter.drawImage(left, kGap, picture);
        left += picture.width() + kGap;
    }
    return both;
}

void takeForReadme(const QDir& folder) {
    struct Shot {
        const char* file;
        const char* scene;
        Appearance appearance = Appearance::light;
        QSize size{1000, 680};
    };
    for (const auto& shot : {Shot{"light", "board"}, Shot{"dark", "board", Appearance::dark},
                             Shot{"upcoming", "upcoming"}, Shot{"completed", "completed"},
                             Shot{"search", "search"}, Shot{"settings", "settings-backups"},
                             Shot{"settings-dark", "settings-general", Appearance::dark},
                             Shot{"quick-entry", "quick-entry"},
                             Shot{"quick-entry-dark", "quick-entry-text", Appearance::dark},
                             Shot{"note", "text-edited", Appearance::light, {900, 760}}}) {
        PicturedWindow window(
            {.name = shot.file, .appearance = shot.appearance, .size = shot.size});
        window.scenes().open(shot.scene);
        save(window.picture(), folder.filePath(QString::fromLatin1(shot.file) + ".png"));
        if (std::string_view(shot.file) == "note") {
            window.writeNote(folder.filePath(QStringLiteral("note.rtf")));
        }
    }
    save(widgets(), folder.filePath(QStringLiteral("widget.png")));
}

} // namespace

int main(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    QCommandLineParser parser;
    const QCommandLineOption scale(QStringLiteral("scale"), {}, QStringLiteral("N"),
                                   QStringLiteral("1"));
    const QCommandLineOption only(QStringLiteral("only"), {}, QStringLiteral("SCENE"));
    const QCommandLineOption sheets(QStringLiteral("sheets"));
    const QCommandLineOption readme(QStringLiteral("readme"));
    parser.addOptions({scale, only, sheets, readme});
    parser.addPositionalArgument(QStringLiteral("FOLDER"), {});
    if (!parser.parse(arguments) || parser.positionalArguments().size() != 1) {
        std::fputs("ui_pictures FOLDER [--scale N] [--only SCENE]… | --sheets | --readme\n",
                   stderr);
        return 2;
    }
    // One look everywhere: no screen, no desktop's theme, one locale and zone.
    QTemporaryFile screen;
    describeScreen(screen, parser.value(scale).toInt());
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + QFile::encodeName(screen.fileName()));
    qputenv("QT_QPA_PLATFORMTHEME", "none");
    qputenv("QT_SCALE_FACTOR", parser.value(scale).toUtf8());
    qputenv("LC_ALL", "en_US.UTF-8");
    qputenv("TZ", "UTC");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QApplication application(argc, argv);
    QApplication::setCursorFlashTime(0);
    ui::setUpLanguage(application);
    const QDir folder(parser.positionalArguments().front());
    if (parser.isSet(sheets)) {
        makeSheets(folder);
    } else if (parser.isSet(readme)) {
        takeForReadme(folder);
    } else {
        takeAll(folder, parser.value(scale).toInt(), parser.values(only));
    }
    QThreadPool::globalInstance()->waitForDone();
    return hasFailed ? 1 : 0;
}
