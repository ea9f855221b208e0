#include "desktop/Arguments.h"

#include <QApplication>
#include <QCommandLineParser>

namespace korvex::desktop {

namespace {

const auto kDirectory = QStringLiteral("data-dir");
const auto kBackground = QString::fromLatin1(kBackgroundOption + 2);
const auto kGallery = QStringLiteral("gallery");

/// In the language that is set up when it is asked.
void describe(QCommandLineParser& parser) {
    parser.addHelpOption();
    parser.addOption(
        {kDirectory, QApplication::tr("The folder that holds the store."), QStringLiteral("DIR")});
    parser.addOption({kBackground, QApplication::tr("Start without a window, ready for Quick "
                                                    "Entry.")});
    parser.addPositionalArgument(QStringLiteral("LINK"),
                                 QApplication::tr("A link to a board or an entry."),
                                 QStringLiteral("[LINK…]"));
#ifdef KORVEX_GALLERY
    parser.addOption({kGallery, QStringLiteral("Show what the windows are made of.")});
#endif
}

} // namespace

Arguments::Arguments(int count, char* given[]) {
    m_launch.token = app::launchToken();
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words.append(QString::fromLocal8Bit(given[i]));
    }
    QCommandLineParser parser;
    describe(parser);
    const auto isUnderstood = parser.parse(words) && !parser.isSet(QStringLiteral("help"));
    take(parser);
    m_areClear = isUnderstood && !m_gallery;
}

void Arguments::answer(const QApplication& application) {
    QCommandLineParser parser;
    describe(parser);
    parser.process(application);
    take(parser);
}

void Arguments::take(const QCommandLineParser& parser) {
    if (parser.isSet(kDirectory)) {
        m_directory = parser.value(kDirectory).toStdString();
    }
    m_launch.action = parser.isSet(kBackground) ? kBackgroundAction : "";
    m_launch.links.clear();
    for (const auto& link : parser.positionalArguments()) {
        m_launch.links.push_back(link.toStdString());
    }
#ifdef KORVEX_GALLERY
    if (parser.isSet(kGallery)) {
        m_gallery = parser.positionalArguments();
    }
#endif
}

} // namespace korvex::desktop
