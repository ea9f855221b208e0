#include "desktop/Arguments.h"

#include <QApplication>

namespace korvex::desktop {

Arguments::Arguments(int count, char* given[])
    : m_help(m_parser.addHelpOption()),
      m_directory(QStringLiteral("data-dir"), QApplication::tr("The folder that holds the store."),
                  QStringLiteral("DIR")),
      m_gallery(QStringLiteral("gallery"), QStringLiteral("Show what the windows are made of.")) {
    m_parser.addOption(m_directory);
#ifdef KORVEX_GALLERY
    m_parser.addOption(m_gallery);
#endif
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words.append(QString::fromLocal8Bit(given[i]));
    }
    m_areClear = m_parser.parse(words) && !m_parser.isSet(m_help) && !gallery();
}

void Arguments::answer(const QApplication& application) {
    m_parser.process(application);
}

std::optional<std::filesystem::path> Arguments::dataDirectory() const {
    return m_parser.isSet(m_directory)
               ? std::optional(std::filesystem::path(m_parser.value(m_directory).toStdString()))
               : std::nullopt;
}

std::optional<QStringList> Arguments::gallery() const {
#ifdef KORVEX_GALLERY
    return m_parser.isSet(m_gallery) ? std::optional(m_parser.positionalArguments()) : std::nullopt;
#else
    return std::nullopt;
#endif
}

} // namespace korvex::desktop
