#include "ui/kit/words/Plurals.h"

#include <QRegularExpression>

namespace korvex::ui {

QString Plurals::translate(const char*, const char* sourceText, const char*, int n) const {
    if (n < 0) {
        return {};
    }
    static const QRegularExpression kForms(QStringLiteral(R"(\((?:(\w+)\|)?(\w+)\))"));
    auto text = QString::fromUtf8(sourceText);
    for (auto forms = kForms.match(text); forms.hasMatch(); forms = kForms.match(text)) {
        text.replace(forms.capturedStart(), forms.capturedLength(),
                     n == 1 ? forms.captured(1) : forms.captured(2));
    }
    return text;
}

} // namespace korvex::ui
