#include "ui/gallery/Gallery.h"

#include "app/FileUserDefaults.h"
#include "ui/gallery/GalleryWindow.h"
#include "ui/kit/style/QuietStyle.h"

#include <QApplication>
#include <QTemporaryDir>

#include <algorithm>

namespace korvex::ui {

int runGallery(const QStringList& look) {
    using Appearance = app::AppPreferences::Appearance;
    const QTemporaryDir folder;
    base::StandardErrorLog log(base::LogLevel::warning);
    app::FileUserDefaults defaults(folder.filePath(QStringLiteral("settings.json")).toStdString());
    app::AppPreferences preferences(defaults, log);
    Theme theme(preferences);
    const InstalledStyle style(theme);
    const auto& sizes = app::AppPreferences::kFontSizes;
    Theme::System system;
    for (const auto& word : look) {
        if (word == QLatin1String("light")) {
            preferences.setAppearance(Appearance::light);
        } else if (word == QLatin1String("dark")) {
            preferences.setAppearance(Appearance::dark);
        } else if (word == QLatin1String("contrast")) {
            system.contrast = Theme::SystemContrast::high;
        } else if (word == QLatin1String("still")) {
            system.motion = Theme::SystemMotion::still;
        } else if (word == QLatin1String("rtl")) {
            QApplication::setLayoutDirection(Qt::RightToLeft);
        } else if (std::find(sizes.begin(), sizes.end(), word.toInt()) != sizes.end()) {
            preferences.setFontSize(word.toInt());
        }
    }
    theme.setSystem(system);
    GalleryWindow window(preferences, theme);
    window.show();
    return QApplication::exec();
}

} // namespace korvex::ui
