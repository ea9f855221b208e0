#include "ui/kit/words/Language.h"

#include "base/UserLocale.h"
#include "ui/kit/words/Plurals.h"
#include "ui/kit/words/Text.h"

#include <QCoreApplication>
#include <QLocale>

namespace korvex::ui {

std::string setUpLanguage(QCoreApplication& application) {
    QCoreApplication::installTranslator(new Plurals(&application));
    // A catalogue translates the name of the language to that of its own.
    const auto language = toUtf8(QCoreApplication::translate("korvex::ui::Language", "en"));
    auto locale = base::localeSpeaking(language, "LC_TIME");
    // For what Qt writes itself, which knows nothing of the parts after "-u-".
    QLocale::setDefault(QLocale(toQString(locale).section(QStringLiteral("-u-"), 0, 0)));
    return locale;
}

} // namespace korvex::ui
