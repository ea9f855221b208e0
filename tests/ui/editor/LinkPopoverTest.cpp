#include "ui/editor/LinkPopover.h"

#include "ui/WindowFixture.h"
#include "ui/editor/LinkTarget.h"

#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>

namespace korvex::ui {
namespace {

TEST(LinkTarget, AHostOrMailAddressGetsItsSchemeAndNothingElseMayBeOpened) {
    struct Case {
        const char* typed;
        /// Null: refused.
        const char* stored;
    };
    for (const auto& [typed, stored] : {
             Case{"https://example.org/a?b#c", "https://example.org/a?b#c"},
             Case{"HTTP://example.org", "HTTP://example.org"},
             Case{"mailto:ada@example.org", "mailto:ada@example.org"},
             Case{"example.org", "https://example.org"},
             Case{"  www.example.org/path?q=1  ", "https://www.example.org/path?q=1"},
             Case{"example.org:8080", "https://example.org:8080"},
             Case{"localhost:8080/notes", "https://localhost:8080/notes"},
             Case{"192.168.0.1", "https://192.168.0.1"},
             Case{"[::1]:8080/", "https://[::1]:8080/"},
             Case{"münchen.example", "https://münchen.example"},
             Case{"ada@example.org", "mailto:ada@example.org"},
             Case{"ada+notes@example.org?subject=x", "mailto:ada+notes@example.org?subject=x"},
             Case{"", nullptr},
             Case{"example", nullptr},
             Case{"two words.org", nullptr},
             Case{"/etc/passwd", nullptr},
             Case{"file:///etc/passwd", nullptr},
             Case{"ftp://example.org", nullptr},
             Case{"javascript:alert(1)", nullptr},
             Case{"javascript:a@example.org", nullptr},
             Case{"data:text/html,x", nullptr},
             Case{"https:", nullptr},
         }) {
        const auto target = linkTarget(QString::fromUtf8(typed));
        EXPECT_EQ(target ? target->toStdString() : "refused", stored ? stored : "refused") << typed;
    }
}

class LinkPopoverTest : public tests::WindowFixture {
protected:
    LinkPopoverTest() {
        window.resize(600, 400);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void open(const QString& target) {
        popover = new LinkPopover(target, theme, &window);
        QObject::connect(popover, &LinkPopover::chosen, &window,
                         [this](const QString& to) { chosen.append(to); });
        QObject::connect(popover, &LinkPopover::openRequested, &window,
                         [this](const QString& to) { opened.append(to); });
        popover->openAt({window.mapToGlobal(QPoint(20, 20)), QSize(80, 20)});
        popover->setFocus();
        QApplication::processEvents();
    }
    QPushButton& button(const char* text) {
        for (auto* const each : popover->findChildren<QPushButton*>()) {
            if (each->text() == QString::fromUtf8(text)) {
                return *each;
            }
        }
        throw std::invalid_argument(text);
    }
    void type(const char* text) {
        auto* const field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        ASSERT_TRUE(field);
        field->selectAll();
        QTest::keyClicks(field, QString::fromUtf8(text));
    }
    void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    void pressOutside() { QTest::mouseClick(&window, Qt::LeftButton, {}, QPoint(590, 390)); }
    QString error() const {
        const auto labels = popover->findChildren<QLabel*>();
        return labels.front()->isVisible() ? labels.front()->text() : QString();
    }
    bool isOpen() {
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return popover && popover->isVisible();
    }

    QWidget window;
    QPointer<LinkPopover> popover;
    QStringList chosen;
    QStringList opened;
};

TEST_F(LinkPopoverTest, WhatIsTypedIsChosenByReturnAndByAPressOutside) {
    open({});
    type("example.org");
    press(Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    open(QStringLiteral("https://example.org"));
    type("ada@example.org");
    pressOutside();
    EXPECT_FALSE(isOpen());
    open({});
    type("example.com");
    preferences.setFontSize(24);
    EXPECT_FALSE(isOpen()) << "it was made for another look";
    EXPECT_EQ(chosen, QStringList({QStringLiteral("https://example.org"),
                                   QStringLiteral("mailto:ada@example.org"),
                                   QStringLiteral("https://example.com")}));
}

TEST_F(LinkPopoverTest, ItsButtonsHaveRoomInANarrowWindowWithALargeFont) {
    preferences.setFontSize(app::AppPreferences::kFontSizes.back());
    window.resize(360, 500);
    open(QStringLiteral("https://example.org/"));
    for (const auto* const each : popover->findChildren<QPushButton*>()) {
        EXPECT_TRUE(popover->rect().contains(each->geometry())) << each->text().toStdString();
        EXPECT_GE(each->width(), each->sizeHint().width()) << each->text().toStdString();
    }
}

TEST_F(LinkPopoverTest, ARefusedTargetStaysWithTheReasonUntilItIsMended) {
    open({});
    type("javascript:alert(1)");
    for (const bool isByReturn : {true, false}) {
        isByReturn ? press(Qt::Key_Return) : pressOutside();
        ASSERT_TRUE(isOpen());
        EXPECT_EQ(error(), QStringLiteral("A link is a web address or a mail address."));
        EXPECT_EQ(popover->findChild<QLineEdit*>()->text(), QStringLiteral("javascript:alert(1)"));
    }
    type("example.org");
    EXPECT_EQ(error(), QString());
    press(Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen, QStringList(QStringLiteral("https://example.org")));
}

TEST_F(LinkPopoverTest, ALinkThatIsThereCanBeOpenedKeptAndTakenAway) {
    const auto target = QStringLiteral("https://example.org/");
    open(target);
    EXPECT_TRUE(button("Open").isEnabled());
    button("Open").click();
    EXPECT_EQ(opened, QStringList(target));
    ASSERT_TRUE(isOpen());
    pressOutside();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(chosen.isEmpty()) << "nothing was changed";

    open(target);
    type("example.com");
    press(Qt::Key_Escape);
    EXPECT_EQ(chosen, QStringList(QStringLiteral("https://example.com"))) << "kept, as typed words";
    open(target);
    type("javascript:alert(1)");
    press(Qt::Key_Escape);
    ASSERT_TRUE(isOpen());
    press(Qt::Key_Escape);
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen.size(), 1) << "what is refused is given up with a second one";
    chosen.clear();

    open(target);
    button("Remove link").click();
    EXPECT_FALSE(isOpen());
    EXPECT_EQ(chosen, QStringList(QString()));
    open(target);
    press(Qt::Key_Delete); // the field is selected
    press(Qt::Key_Return);
    EXPECT_EQ(chosen, QStringList({QString(), QString()}));
}

TEST_F(LinkPopoverTest, AStoredTargetThatMayNotBeOpenedIsShownWholeAndNotOpened) {
    const auto target =
        QStringLiteral("file:///") + QString(3 * kMaximumLinkLength, QLatin1Char('a'));
    open(target);
    EXPECT_FALSE(button("Open").isEnabled());
    EXPECT_EQ(popover->findChild<QLineEdit*>()->text(), target);
    press(Qt::Key_Return);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(chosen.isEmpty());
}

} // namespace
} // namespace korvex::ui
