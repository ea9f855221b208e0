#include "desktop/Arguments.h"

#include "app/QuickEntryRequest.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstdlib>

namespace korvex::desktop {

namespace {

const auto kDirectory = QStringLiteral("data-dir");
const auto kBackground = QString::fromLatin1(kBackgroundOption + 2);
const auto kForBus = QString::fromLatin1(kForBusOption + 2);
const auto kQuickEntry = QStringLiteral("quick-entry");
const auto kBoard = QStringLiteral("board");
const auto kType = QStringLiteral("type");
const auto kGallery = QStringLiteral("gallery");
constexpr int kWrongUsage = 2;

/// In the language that is set up when it is asked.
void describe(QCommandLineParser& parser) {
    parser.addHelpOption();
    parser.addOption(
        {kDirectory, QApplication::tr("The folder that holds the store."), QStringLiteral("DIR")});
    parser.addOption({kBackground, QApplication::tr("Start without a window, ready for Quick "
                                                    "Entry.")});
    parser.addOption(
        {kQuickEntry, QApplication::tr("Show only the panel that captures todos and texts.")});
    parser.addOption({kBoard,
                      QApplication::tr("The board that is chosen in the panel, by identifier."),
                      QStringLiteral("ID")});
    parser.addOption({kType, QApplication::tr("What the panel captures: todo or text."),
                      QStringLiteral("TYPE")});
    parser.addPositionalArgument(QStringLiteral("LINK"),
                                 QApplication::tr("A link to a board or an entry."),
                                 QStringLiteral("[LINK…]"));
    QCommandLineOption forBus(kForBus);
    forBus.setFlags(QCommandLineOption::HiddenFromHelp); // no user has a use for it
    parser.addOption(forBus);
#ifdef KORVEX_GALLERY
    parser.addOption({kGallery, QStringLiteral("Show what the windows are made of.")});
#endif
}

/// Why it cannot be what the user means; empty where it can.
QString objection(const QCommandLineParser& parser) {
    const auto isType = [&] {
        return app::entryTypeNamed(parser.value(kType).toStdString()).has_value();
    };
    const auto isBoard = [&] {
        return base::Uuid::parse(parser.value(kBoard).toStdString()).has_value();
    };
    if (!parser.isSet(kQuickEntry)) {
        return parser.isSet(kBoard) || parser.isSet(kType)
                   ? QApplication::tr("--board and --type are for --quick-entry.")
                   : QString();
    }
    if (!parser.positionalArguments().isEmpty()) {
        return QApplication::tr("--quick-entry takes no link.");
    }
    if (parser.isSet(kType) && !isType()) {
        return QApplication::tr("--type takes todo or text.");
    }
    return parser.isSet(kBoard) && !isBoard()
               ? QApplication::tr("--board takes a board's identifier.")
               : QString();
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
    m_areClear = isUnderstood && objection(parser).isEmpty() && !m_gallery;
}

void Arguments::answer(const QApplication& application) {
    QCommandLineParser parser;
    describe(parser);
    parser.process(application);
    if (const auto why = objection(parser); !why.isEmpty()) {
        std::fputs(qPrintable(why + QLatin1Char('\n')), stderr);
        std::exit(kWrongUsage);
    }
    take(parser);
}

void Arguments::take(const QCommandLineParser& parser) {
    if (parser.isSet(kDirectory)) {
        m_directory = parser.value(kDirectory).toStdString();
    }
    m_launch.action = parser.isSet(kBackground) ? kBackgroundAction
                      : parser.isSet(kForBus)   ? kForBusAction
                                                : "";
    m_launch.links.clear();
    for (const auto& link : parser.positionalArguments()) {
        m_launch.links.push_back(link.toStdString());
    }
    if (parser.isSet(kQuickEntry)) {
        const app::QuickEntryRequest request{
            .board = base::Uuid::parse(parser.value(kBoard).toStdString()),
            .type = app::entryTypeNamed(parser.value(kType).toStdString())};
        const auto asked = request.launch();
        m_launch.action = asked.action;
        m_launch.parameters = asked.parameters;
    }
#ifdef KORVEX_GALLERY
    if (parser.isSet(kGallery)) {
        m_gallery = parser.positionalArguments();
    }
#endif
}

} // namespace korvex::desktop
