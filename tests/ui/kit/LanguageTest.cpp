#include "ui/kit/words/Language.h"

#include "base/DateFormats.h"
#include "base/UserLocale.h"
#include "base/Utf16.h"
#include "model/ServiceErrors.h"
#include "support/ScopedEnvironment.h"
#include "ui/kit/words/Plurals.h"
#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

namespace korvex::ui {
namespace {

TEST(Plurals, SayOneAndMany) {
    const Plurals plurals;
    const auto said = [&](const char* text, int n) {
        return plurals.translate("", text, nullptr, n).toStdString();
    };
    EXPECT_EQ(said("%n open todo(s)", 0), "%n open todos");
    EXPECT_EQ(said("%n open todo(s)", 1), "%n open todo");
    EXPECT_EQ(said("%n (entry|entries)", 1), "%n entry");
    EXPECT_EQ(said("%n (entry|entries) in %1 row(s)", 2), "%n entries in %1 rows");
    EXPECT_TRUE(plurals.translate("", "Sort (by name)", nullptr, -1).isNull());
    EXPECT_EQ(QCoreApplication::translate("", "%n result(s)", nullptr, 1),
              QStringLiteral("1 result"));
}

/// A language in which everything is said out loud.
class Loud final : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override {
        return std::string_view(context) == "korvex" ? toQString(text).toUpper() : QString();
    }
};

TEST(Language, WhatTheFloorsBelowSayIsTranslatedByItsEnglishText) {
    Loud loud;
    QCoreApplication::installTranslator(&loud);
    EXPECT_EQ(refusal([] { throw base::Error("test", 1, "The disk is full."); }),
              QStringLiteral("THE DISK IS FULL."));
    EXPECT_EQ(
        translated(model::EntryServiceErrorCase::emptyContent),
        toQString(model::descriptionOf(model::EntryServiceErrorCase::emptyContent)).toUpper());
    QCoreApplication::removeTranslator(&loud);
}

/// What stands in a field reads as the same moment does in a label.
TEST(Language, FieldsReadAsLabelsDo) {
    struct Case {
        const char* environment;
        const char* day;
        const char* time;
    };
    constexpr base::Instant kEvening{763286400 + 13.5 * 3600}; // 2025-03-10 21:30 UTC
    for (const auto& each : {
             Case{"en_US.UTF-8", "3/10/2025", "9:30\u202fPM"},
             Case{"en_GB.UTF-8", "10/03/2025", "21:30"},
             Case{"de_DE.UTF-8", "10/03/2025", "21:30"},
             Case{"fr_FR.UTF-8", "10/03/2025", "21:30"},
             Case{"fi_FI.UTF-8", "10/03/2025", "21.30"},
             Case{"ar_EG.UTF-8", "10/03/2025", "9:30\u202fpm"},
             Case{"C", "3/10/2025", "9:30\u202fPM"},
         }) {
        const tests::ScopedEnvironment environment("LC_ALL", each.environment);
        const auto locale = base::localeSpeaking("en", "LC_TIME");
        const base::DateFormats formats(locale, base::TimeZone::utc());
        const auto& typed = formats.typed();
        EXPECT_EQ(base::utf8(typed.shown(base::CivilDay{2025, 3, 10}).text), each.day) << locale;
        EXPECT_EQ(base::utf8(typed.shown(base::ClockTime{21, 30}).text), each.time) << locale;
        EXPECT_EQ(formats.shortTime(kEvening), each.time) << locale;
        EXPECT_NE(formats.dayWithWeekday(kEvening).find("Mon"), std::string::npos)
            << "in the language of the texts";
    }
}

} // namespace
} // namespace korvex::ui
