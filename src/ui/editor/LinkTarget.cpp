#include "ui/editor/LinkTarget.h"

#include "richtext/stored/RichTextSerializer.h"
#include "ui/kit/words/Text.h"

#include <QRegularExpression>

namespace korvex::ui {

namespace {

QRegularExpression expression(const char* pattern) {
    return QRegularExpression(QRegularExpression::anchoredPattern(QLatin1String(pattern)),
                              QRegularExpression::UseUnicodePropertiesOption |
                                  QRegularExpression::CaseInsensitiveOption);
}

/// Such as "example.org", "localhost:8080/path" and "[::1]/": a host has at least one dot where it
/// is not the own machine.
bool isHostWithPath(const QString& text) {
    static const auto pattern =
        expression(R"((localhost|\[[0-9a-f:.]+\]|[\w-]+(\.[\w-]+)+\.?)(:\d{1,5})?([/?#]\S*)?)");
    return pattern.match(text).hasMatch();
}

bool isMailAddress(const QString& text) {
    static const auto pattern = expression(R"([^\s@/:?#]+@[\w-]+(\.[\w-]+)+(\?\S*)?)");
    return pattern.match(text).hasMatch();
}

bool hasScheme(const QString& text) {
    static const auto pattern = expression(R"([a-z][a-z0-9+.-]*:\S.*)");
    return pattern.match(text).hasMatch();
}

} // namespace

std::optional<QString> linkTarget(const QString& typed) {
    const auto text = typed.trimmed();
    // "localhost:8080" has the form of a scheme, but is a host.
    if (isHostWithPath(text)) {
        return QStringLiteral("https://") + text;
    }
    if (isMailAddress(text)) {
        return QStringLiteral("mailto:") + text;
    }
    if (hasScheme(text) && richtext::canOpenLink(toUtf8(text))) {
        return text;
    }
    return std::nullopt;
}

} // namespace korvex::ui
