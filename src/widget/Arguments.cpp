#include "widget/Arguments.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace korvex::widget {

namespace {

const auto kDirectory = QStringLiteral("data-dir");
const auto kBoard = QStringLiteral("board");
const auto kLogin = QStringLiteral("at-login");

constexpr int kWrongUsage = 2;
constexpr const char* kShow = "show-widget";
constexpr const char* kShowAtLogin = "show-widgets-at-login";
constexpr std::string_view kBoardParameter = "board=";

/// In the language that is set up when it is asked.
void describe(QCommandLineParser& parser) {
    parser.setApplicationDescription(
        QApplication::tr("Shows the open todos of boards on the desktop."));
    parser.addHelpOption();
    parser.addOption(
        {kDirectory, QApplication::tr("The folder that holds the store."), QStringLiteral("DIR")});
    parser.addOption({kBoard, QApplication::tr("The identifier of the board to be shown."),
                      QStringLiteral("ID")});
    parser.addOption(
        {kLogin, QApplication::tr("Show the widgets that were there, and nothing else.")});
}

std::optional<base::Uuid> boardOf(const QCommandLineParser& parser) {
    return base::Uuid::parse(parser.value(kBoard).toStdString());
}

bool isUnderstood(const QCommandLineParser& parser) {
    return parser.positionalArguments().isEmpty() && (!parser.isSet(kBoard) || boardOf(parser));
}

} // namespace

app::Launch Request::launch() const {
    app::Launch launch{.action = isLogin ? kShowAtLogin : kShow};
    if (board) {
        launch.parameters.push_back(std::string(kBoardParameter) + board->text());
    }
    return launch;
}

Request Request::of(const app::Launch& launch) {
    Request request{.isLogin = launch.action == kShowAtLogin};
    for (const auto& parameter : launch.parameters) {
        if (parameter.starts_with(kBoardParameter)) {
            request.board = base::Uuid::parse(parameter.substr(kBoardParameter.size()));
        }
    }
    return request;
}

Arguments::Arguments(int count, char* given[]) {
    QStringList words;
    for (int i = 0; i < count; ++i) {
        words.append(QString::fromLocal8Bit(given[i]));
    }
    QCommandLineParser parser;
    describe(parser);
    m_areClear =
        parser.parse(words) && !parser.isSet(QStringLiteral("help")) && isUnderstood(parser);
    if (parser.isSet(kDirectory)) {
        m_directory = parser.value(kDirectory).toStdString();
    }
    m_request = {.board = boardOf(parser), .isLogin = parser.isSet(kLogin)};
}

void Arguments::answer(const QApplication& application) {
    QCommandLineParser parser;
    describe(parser);
    parser.process(application);
    if (!isUnderstood(parser)) {
        const auto extra = parser.positionalArguments();
        const auto said = extra.isEmpty()
                              ? QApplication::tr("That is no identifier of a board.")
                              : QApplication::tr("Unexpected argument: %1").arg(extra.front());
        std::fputs(qPrintable(said + QLatin1Char('\n')), stderr);
        std::exit(kWrongUsage);
    }
}

} // namespace korvex::widget
