#include "ui/kit/overlays/ErrorBanner.h"

#include "ui/WindowFixture.h"

#include <QAbstractButton>
#include <QLabel>
#include <QTimer>

namespace korvex::ui {
namespace {

class ErrorBannerTest : public tests::WindowFixture {
protected:
    ErrorBannerTest() {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    std::string shown() const {
        return banner.isVisible() ? toUtf8(banner.message()) : std::string("nothing");
    }
    void press(const char* name) {
        for (auto* const button : banner.findChildren<QAbstractButton*>()) {
            const auto& says = button->text().isEmpty() ? button->accessibleName() : button->text();
            if (button->isVisible() && says == QString::fromUtf8(name)) {
                button->click();
                return;
            }
        }
        ADD_FAILURE() << "no button says: " << name;
    }
    void letTimePass() {
        auto& end = *banner.findChild<QTimer*>();
        if (end.isActive()) {
            end.start(0);
            QApplication::processEvents();
        }
    }
    static ErrorBanner::Message lasting(const char* text) {
        return {.text = QString::fromUtf8(text), .tone = ErrorBanner::Tone::notice};
    }
    static ErrorBanner::Message brief(const char* text) {
        auto message = lasting(text);
        message.lasts = ErrorBanner::Lasts::shortly;
        return message;
    }

    QWidget window;
    ErrorBanner banner{theme, &window};
};

TEST_F(ErrorBannerTest, TheLastMessageIsSeenAndThenTheOneBefore) {
    const auto first = banner.say(lasting("first"));
    banner.say(brief("second"));
    EXPECT_EQ(shown(), "second");
    letTimePass();
    EXPECT_EQ(shown(), "first");
    letTimePass();
    EXPECT_EQ(shown(), "first") << "it lasts";
    banner.say(lasting("third"));
    press("Close this message");
    EXPECT_EQ(shown(), "first");
    banner.end(first);
    EXPECT_EQ(shown(), "nothing");
}

TEST_F(ErrorBannerTest, WhoHasSaidSomethingEndsNothingElse) {
    const auto mine = banner.say(lasting("mine"));
    banner.end(mine);
    banner.say(lasting("another's"));
    banner.end(mine);
    banner.end(0);
    EXPECT_EQ(shown(), "another's");
    const auto below = banner.say(lasting("below"));
    banner.say(lasting("above"));
    banner.end(below);
    EXPECT_EQ(shown(), "above");
    press("Close this message");
    EXPECT_EQ(shown(), "another's");
    const auto before = banner.say(lasting("before"));
    banner.say(lasting("instead"), before);
    press("Close this message");
    EXPECT_EQ(shown(), "another's");
}

TEST_F(ErrorBannerTest, AButtonEndsItsMessageAndDoesWhatItSays) {
    banner.say(lasting("lasting"));
    auto offer = brief("offer");
    offer.action = QStringLiteral("Undo");
    std::string seen;
    offer.perform = [&] {
        seen = shown();
        banner.say(lasting("what came of it"));
    };
    banner.say(offer);
    press("Undo");
    EXPECT_EQ(seen, "lasting");
    EXPECT_EQ(shown(), "what came of it");
    for (const auto* const button : banner.findChildren<QAbstractButton*>()) {
        EXPECT_NE(button->isVisible() ? button->text() : QString(), QStringLiteral("Undo"));
    }
}

TEST_F(ErrorBannerTest, ItIsAsWideAsItsWordsAndNoWiderThanATextIsToBe) {
    auto offer = lasting("“a” was deleted.");
    offer.action = QStringLiteral("Undo");
    banner.say(offer);
    EXPECT_LT(banner.sizeHint().width(), theme.measure() / 2);
    banner.resize(banner.sizeHint());
    EXPECT_EQ(banner.heightForWidth(banner.width()), banner.heightForWidth(theme.measure()))
        << "in one line";
    banner.say(lasting(std::string(400, 'w').c_str()));
    EXPECT_EQ(banner.sizeHint().width(), theme.measure());
}

TEST_F(ErrorBannerTest, WhereThereIsNoRoomTheButtonStandsBelowTheWords) {
    preferences.setFontSize(app::AppPreferences::kFontSizes.back());
    QApplication::processEvents();
    auto offer = lasting("“Write the minutes of Tuesday and send them to Jonas” was deleted.");
    offer.action = QStringLiteral("Undo");
    banner.say(offer);
    for (const int width : {340, 800}) {
        banner.resize(width, banner.heightForWidth(width));
        QApplication::processEvents();
        QRect words;
        QRect button;
        for (const auto* const each : banner.findChildren<QWidget*>()) {
            const auto* const label = qobject_cast<const QLabel*>(each);
            const auto* const press = qobject_cast<const QAbstractButton*>(each);
            words = label && label->wordWrap() ? each->geometry() : words;
            button = press && press->text() == offer.action ? each->geometry() : button;
            EXPECT_TRUE(banner.rect().contains(each->geometry())) << width;
            EXPECT_GE(each->height(), label ? label->heightForWidth(label->width()) : 0) << width;
        }
        EXPECT_GE(words.width(), width / 2) << width;
        EXPECT_EQ(button.top() > words.bottom(), width < 500);
    }
}

} // namespace
} // namespace korvex::ui
