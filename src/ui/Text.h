#pragma once

#include <QString>

#include <string>
#include <string_view>

namespace korvex::ui {

inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Unit for unit; QString's own conversion takes a byte order mark away.
inline QString toQString(std::u16string_view text) {
    return QString(reinterpret_cast<const QChar*>(text.data()),
                   static_cast<qsizetype>(text.size()));
}

/// An unpaired surrogate, which no UTF-8 can carry, becomes the replacement character.
inline std::string toUtf8(const QString& text) {
    return text.toStdString();
}

} // namespace korvex::ui
