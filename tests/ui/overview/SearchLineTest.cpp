#include "ui/overview/SearchLine.h"

#include "ui/kit/words/Text.h"

#include <QFont>
#include <QStringList>

#include <gtest/gtest.h>

#include <random>

namespace korvex::ui {
namespace {

const base::TextFolding& folding() {
    static const base::TextFolding instance("en");
    return instance;
}

/// The line with its marks in brackets.
std::string shown(const SearchLine& line) {
    QString result;
    qsizetype done = 0;
    for (const auto& mark : line.marks) {
        result += line.text.mid(done, mark.start - done);
        result += QLatin1Char('[') + line.text.mid(mark.start, mark.length) + QLatin1Char(']');
        done = mark.start + mark.length;
    }
    return toUtf8(result + line.text.mid(done));
}

std::string lineOf(std::string_view text, std::vector<std::string> terms) {
    for (auto& term : terms) {
        term = folding().folded(term);
    }
    return shown(SearchLine::of(text, terms, folding()));
}

TEST(SearchLine, IsTheOneOfTheFirstMatchWithAllMatchesMarked) {
    const struct {
        std::string text;
        std::vector<std::string> terms;
        std::string expected;
    } cases[] = {
        {"Buy milk", {"milk"}, "Buy [milk]"},
        {"Milk and more milk", {"MILK"}, "[Milk] and more [milk]"},
        {"Café in the Straße", {"cafe", "strasse"}, "[Café] in the [Straße]"},
        {"first\n  second with milk\nthird milk", {"milk"}, "second with [milk]"},
        {"first\r\nmilk\r\nthird", {"milk"}, "[milk]"},
        {"\n\n  \tfirst written\nmore", {}, "first written"},
        {"a\tb milk", {"milk"}, "a b [milk]"},
        {"牛乳を買う", {"乳"}, "牛[乳]を買う"},
        {"👩‍👩‍👧 milk", {"milk"}, "👩‍👩‍👧 [milk]"},
        {"", {"milk"}, ""},
        {"   ", {}, ""},
    };
    for (const auto& [text, terms, expected] : cases) {
        EXPECT_EQ(lineOf(text, terms), expected);
    }
}

TEST(SearchLine, OfAVeryLongLineShowsWhatIsAroundTheMatch) {
    std::string text;
    for (int i = 0; i < 2'000; ++i) {
        text += "äöü ";
    }
    const auto line = SearchLine::of(text + "needle " + text, {"needle"}, folding());
    ASSERT_EQ(line.marks.size(), 1U);
    EXPECT_EQ(line.text.mid(line.marks[0].start, 6), QStringLiteral("needle"));
    EXPECT_TRUE(line.text.startsWith(QChar(0x2026)) && line.text.endsWith(QChar(0x2026)));
    EXPECT_FALSE(line.text.contains(QChar(0xFFFD))) << "cut between characters only";
    EXPECT_LT(line.text.size(), 4'000);
}

/// Whatever the text and the width: it fits, the first match is seen, and marks mark what was
/// searched.
TEST(SearchLine, FittedShowsTheFirstMatchInAnyWidth) {
    std::mt19937 random(1);
    const QFontMetrics metrics{QFont()};
    const QStringList words{QStringLiteral("word"), QStringLiteral("äö"), QStringLiteral("牛乳"),
                            QStringLiteral("👍"), QStringLiteral("שלום")};
    for (int round = 0; round < 300; ++round) {
        QString text;
        const auto before = random() % 60;
        for (unsigned i = 0; i < before; ++i) {
            text += words[static_cast<qsizetype>(random() % 5)] + QLatin1Char(' ');
        }
        text += QStringLiteral("needle and more of it needle");
        const auto line = SearchLine::of(toUtf8(text), {"needle"}, folding());
        const int width = 100 + static_cast<int>(random() % 500);
        const auto fitted = line.fitted(metrics, width);
        ASSERT_LE(metrics.horizontalAdvance(fitted.text), width) << shown(fitted);
        ASSERT_FALSE(fitted.marks.empty()) << shown(line) << " in " << width;
        EXPECT_EQ(fitted.text.mid(fitted.marks[0].start, fitted.marks[0].length),
                  QStringLiteral("needle"))
            << width;
    }
}

} // namespace
} // namespace korvex::ui
