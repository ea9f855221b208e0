#pragma once

#include <QCoreApplication>
#include <QFile>
#include <QString>

#include <filesystem>
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

/// The file that Qt names, byte for byte.
inline std::filesystem::path toPath(const QString& file) {
    return QFile::encodeName(file).toStdString();
}

/// The other way round.
inline QString toFileName(const std::filesystem::path& file) {
    return QFile::decodeName(QByteArray::fromStdString(file.native()));
}

/// What the floors below say, in the language of the windows: a catalogue has it by its English
/// text, all in one context.
inline QString translated(std::string_view english) {
    return QCoreApplication::translate("korvex", std::string(english).c_str());
}

/// The same of a refusal that nobody threw.
template <typename Case>
requires requires(Case which) {
    descriptionOf(which);
}
QString translated(Case which) {
    return translated(descriptionOf(which));
}

/// In letters: a longer one may be too wide for a line.
inline constexpr int kLongWord = 16;
/// Neither is seen: between two letters the first keeps them in one line, the other need not.
inline constexpr QChar kWordJoiner(0x2060);
inline constexpr QChar kMayBreak(0x200B);

/// Words of keys that are pressed together: in one line, or broken behind a plus sign where they
/// are too long for one.
inline QString inOnePiece(const QString& text) {
    const auto behindPlus = text.size() > kLongWord ? kMayBreak : kWordJoiner;
    QString result;
    for (const auto character : text) {
        result += character == QLatin1Char(' ') ? QChar(QChar::Nbsp) : character;
        if (character == QLatin1Char('+')) {
            result += behindPlus;
        } else if (character == QLatin1Char('(')) {
            result += kWordJoiner;
        }
    }
    return result;
}

/// The text with invisible places to break a line in words that are too long for one.
inline QString breakable(const QString& text) {
    QString result;
    int letters = 0;
    for (const auto character : text) {
        const auto isBetween =
            character.isSpace() || character == kWordJoiner || character == kMayBreak;
        letters = isBetween ? 0 : letters + 1;
        if (letters > kLongWord && !character.isLowSurrogate() && !character.isMark()) {
            result += kMayBreak;
        }
        result += character;
    }
    return result;
}

/// The beginning of an entry's first line, to name it by.
inline QString shortened(const QString& text) {
    constexpr int kShown = 60;
    const auto line = text.trimmed().section(QLatin1Char('\n'), 0, 0);
    return line.size() > kShown ? line.left(kShown) + QStringLiteral("…") : line;
}

} // namespace korvex::ui
