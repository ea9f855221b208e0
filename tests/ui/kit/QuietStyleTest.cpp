#include "ui/kit/style/QuietStyle.h"

#include "ui/WindowFixture.h"
#include "ui/kit/controls/FilterChoice.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/controls/SegmentedChoice.h"
#include "ui/kit/controls/Switch.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/lists/ArrivingRows.h"
#include "ui/kit/lists/RowGround.h"
#include "ui/kit/style/PopupPlace.h"
#include "ui/kit/style/ScrollHandle.h"
#include "ui/kit/theme/Danger.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPaintEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>
#include <QVariantAnimation>

#include <cstdlib>

namespace korvex::ui {
namespace {

using Appearance = app::AppPreferences::Appearance;

/// Whether a pixel has the colour, but for what drawing rounds.
bool isOf(const QColor& color, QRgb pixel) {
    const auto near = [](int one, int other) { return std::abs(one - other) <= 1; };
    return near(color.red(), qRed(pixel)) && near(color.green(), qGreen(pixel)) &&
           near(color.blue(), qBlue(pixel));
}

class QuietStyleTest : public tests::WindowFixture {
protected:
    static QRgb colorAt(QWidget& widget, const QPoint& place) {
        return widget.grab().toImage().pixel(place);
    }

private:
    InstalledStyle m_style{theme};
};

TEST_F(QuietStyleTest, WhatStandsInOneLineIsOfOneHeightAtEveryFontSize) {
    for (const auto size : app::AppPreferences::kFontSizes) {
        preferences.setFontSize(size);
        const QPushButton button(QStringLiteral("Save"));
        const QLineEdit field(QStringLiteral("Ägypten"));
        const QSpinBox number;
        QComboBox choice;
        choice.addItem(QStringLiteral("Inbox"));
        const QCheckBox box(QStringLiteral("Due"));
        const Switch onOff(QStringLiteral("Sounds"), theme);
        const SegmentedChoice few(QStringLiteral("Span"), {QStringLiteral("Day")}, theme);
        QToolButton tool;
        tool.setText(QStringLiteral("Tomorrow"));
        const SearchField search(theme);
        const DateField day(
            {.formats = workspace.dates.shared(), .today = [] { return QDate(2025, 3, 10); }},
            theme, nullptr);
        const FilterChoice filter(QStringLiteral("Filter by board"), theme, nullptr);
        for (const auto* const control :
             std::initializer_list<const QWidget*>{&button, &field, &number, &choice, &box, &onOff,
                                                   &few, &tool, &search, &day, &filter}) {
            const auto asked = control->sizeHint().expandedTo(control->minimumSize());
            EXPECT_EQ(asked.boundedTo(control->maximumSize()).height(),
                      theme.extent(Extent::control))
                << control->metaObject()->className() << " at " << size;
        }
    }
}

TEST_F(QuietStyleTest, AButtonSaysByItsGroundWhatItDoes) {
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        preferences.setAppearance(appearance);
        const auto& colors = theme.colors();
        QPushButton chief;
        chief.setDefault(true);
        QPushButton dangerous;
        markDangerous(dangerous);
        QPushButton plain;
        for (auto* const button : {&chief, &dangerous, &plain}) {
            button->resize(100, theme.extent(Extent::control));
        }
        const QPoint middle(50, theme.extent(Extent::control) / 2);
        EXPECT_TRUE(isOf(colors.accent, colorAt(chief, middle)));
        EXPECT_TRUE(isOf(colors.danger, colorAt(dangerous, middle)));
        const auto quiet = colorAt(plain, middle);
        EXPECT_FALSE(isOf(colors.content, quiet));
        EXPECT_GE(contrast(colors.text, quiet), 4.5);
    }
}

/// A list in a window, at the height of five rows.
class ScrollHandleTest : public QuietStyleTest {
protected:
    ScrollHandleTest() {
        list.resize(200, 150);
        list.setFrameShape(QFrame::NoFrame);
        fill(3);
        list.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&list));
    }
    void fill(int rows) {
        list.clear();
        for (int i = 0; i < rows; ++i) {
            list.addItem(QString::number(i));
        }
        QApplication::processEvents();
    }
    QScrollBar& bar() { return *list.verticalScrollBar(); }

    QListWidget list;
};

TEST_F(ScrollHandleTest, TakesNoRoomAndHasNoArrows) {
    const auto width = list.viewport()->width();
    fill(100);
    ASSERT_TRUE(bar().isVisible());
    EXPECT_EQ(list.viewport()->width(), width);
    EXPECT_EQ(width, list.width());
    const auto middle = bar().width() / 2;
    QTest::mousePress(&bar(), Qt::LeftButton, {}, {middle, 2});
    QTest::mouseMove(&bar(), {middle, bar().height() + 50});
    QMouseEvent move(QEvent::MouseMove, QPointF(middle, bar().height() + 50.0),
                     bar().mapToGlobal(QPointF(middle, bar().height() + 50.0)), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&bar(), &move);
    EXPECT_EQ(bar().value(), bar().maximum()) << "grabbed at its upper end";
    QTest::mouseRelease(&bar(), Qt::LeftButton, {}, {middle, bar().height() - 1});
}

TEST_F(ScrollHandleTest, ComesWhileOneScrollsOrPointsAndFadesAMomentLater) {
    fill(100);
    auto& handle = ScrollHandle::of(bar(), theme);
    auto& rest = *handle.findChild<QTimer*>();
    auto& fading = *handle.findChild<QVariantAnimation*>();
    const auto letTimePass = [&](double partOfFading) {
        if (rest.isActive()) {
            rest.stop();
            QMetaObject::invokeMethod(&rest, "timeout");
        }
        fading.setCurrentTime(static_cast<int>(fading.duration() * partOfFading));
    };
    const auto seen = [this] {
        const auto strip = list.grab().toImage();
        int count = 0;
        for (int y = 0; y < strip.height(); ++y) {
            count += isOf(theme.colors().scrollHandle, strip.pixel(strip.width() - 4, y)) ? 1 : 0;
        }
        return count;
    };
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&list, &leave);
    letTimePass(1);
    EXPECT_EQ(handle.opacity(), 0);
    EXPECT_EQ(seen(), 0);
    bar().setValue(7);
    EXPECT_GT(seen(), theme.extent(Extent::control) / 2);
    letTimePass(0.5);
    EXPECT_GT(handle.opacity(), 0);
    EXPECT_LT(handle.opacity(), 1);
    QApplication::sendEvent(&list, &enter);
    EXPECT_EQ(handle.opacity(), 1);
    letTimePass(1);
    EXPECT_EQ(handle.opacity(), 0) << "though the pointer rests there";
    QApplication::sendEvent(&bar(), &enter);
    letTimePass(1);
    EXPECT_EQ(handle.opacity(), 1) << "as long as it is on the bar";
    QApplication::sendEvent(&bar(), &leave);
    EXPECT_EQ(handle.opacity(), 1);
    letTimePass(1);
    EXPECT_EQ(handle.opacity(), 0);
    theme.setSystem({.motion = Theme::SystemMotion::still});
    EXPECT_GT(seen(), 0) << "what may not fade stays";
}

TEST_F(ScrollHandleTest, NothingButTheRowsThatArriveIsDrawnAgain) {
    struct Painted final : QObject {
        QRegion region;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint) {
                region += static_cast<QPaintEvent*>(event)->region();
            }
            return false;
        }
    };
    ArrivingRows arriving(list);
    const auto row = list.model()->index(1, 0);
    arriving.add(row, row);
    auto& animation = *list.findChild<QVariantAnimation*>({}, Qt::FindDirectChildrenOnly);
    animation.pause();
    QApplication::processEvents();
    for (const auto part : {0.5, 1.0}) {
        animation.setCurrentTime(static_cast<int>(animation.duration() * part));
        EXPECT_EQ(arriving.opacityOf(row), part);
        Painted painted;
        list.viewport()->installEventFilter(&painted);
        QApplication::processEvents();
        EXPECT_EQ(painted.region, QRegion(list.visualRect(row)));
    }
}

TEST_F(QuietStyleTest, InHighContrastWhatIsChosenHasAnEdge) {
    for (const auto system : {Theme::SystemContrast::usual, Theme::SystemContrast::high}) {
        theme.setSystem({.contrast = system});
        QListWidget list;
        list.addItem(QStringLiteral("Row"));
        list.setCurrentRow(0);
        list.setFrameShape(QFrame::NoFrame);
        list.resize(100, 40);
        QImage ours(100, 20, QImage::Format_RGB32);
        ours.fill(theme.colors().content);
        QPainter painter(&ours);
        paintRowGround(painter, ours.rect(), QStyle::State_Selected, theme);
        painter.end();
        for (const auto pixel : {colorAt(list, {50, 0}), ours.pixel(50, 0)}) {
            EXPECT_EQ(isOf(theme.colors().accent, pixel), theme.colors().isHighContrast);
        }
    }
}

TEST_F(QuietStyleTest, APopupOpensInsideItsWindowWhereItHasRoom) {
    const QRect window(100, 100, 400, 300);
    struct Case {
        const char* what;
        QRect wanted;
        QPoint pointer;
        QPoint placed;
    };
    for (const auto& each :
         {Case{"with room", {150, 150, 100, 80}, {150, 150}, {150, 150}},
          Case{"at the right edge", {450, 150, 100, 80}, {10, 10}, {400, 150}},
          Case{"before the left edge", {60, 150, 100, 80}, {10, 10}, {100, 150}},
          Case{"at the foot", {150, 350, 100, 80}, {10, 10}, {150, 320}},
          Case{"at the foot, opened by the pointer", {150, 350, 100, 80}, {150, 350}, {150, 270}},
          Case{"wider than the window", {450, 150, 500, 80}, {10, 10}, {450, 150}},
          Case{"higher than the window", {150, 150, 100, 500}, {10, 10}, {150, 150}}}) {
        EXPECT_EQ(
            PopupPlace::inside(window, each.wanted, QRect(each.pointer, QSize(1, 1))).topLeft(),
            each.placed)
            << each.what;
    }
}

TEST_F(QuietStyleTest, AListOfChoicesStaysInItsWindow) {
    QWidget widget;
    widget.setGeometry(100, 100, 300, 260);
    QComboBox choice(&widget);
    for (const auto count : {4, 30}) {
        while (choice.count() < count) {
            choice.addItem(QStringLiteral("Board %1").arg(choice.count()));
        }
        for (const auto& place : {QPoint(0, 0), QPoint(200, 100), QPoint(200, 230)}) {
            choice.setGeometry(QRect(place, QSize(100, theme.extent(Extent::control))));
            widget.show();
            ASSERT_TRUE(QTest::qWaitForWindowExposed(&widget));
            choice.showPopup();
            const auto& list = *choice.view()->window();
            EXPECT_TRUE(widget.geometry().contains(list.geometry()))
                << count << " at " << place.y();
            EXPECT_FALSE(
                list.geometry().intersects(QRect(choice.mapToGlobal(QPoint()), choice.size())));
            choice.hidePopup();
        }
    }
}

TEST_F(QuietStyleTest, AnEmptyFieldBeginsWhereLinesDo) {
    for (const auto direction : {Qt::LeftToRight, Qt::RightToLeft}) {
        QApplication::setLayoutDirection(direction);
        QLineEdit field;
        field.setPlaceholderText(QStringLiteral("Search languages"));
        field.resize(400, theme.extent(Extent::control));
        const auto picture = field.grab().toImage();
        const auto isBlank = [&](int from) {
            auto part = picture.copy(from, 4, 100, picture.height() - 8);
            auto blank = part;
            blank.fill(theme.colors().field);
            return part == blank;
        };
        EXPECT_EQ(isBlank(250), direction == Qt::LeftToRight);
        EXPECT_EQ(isBlank(50), direction == Qt::RightToLeft);
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(QuietStyleTest, OneOfFewIsAGroupOfRadioButtons) {
    QWidget window;
    auto* const row = new QHBoxLayout(&window);
    auto* const before = new QLineEdit;
    auto* const few = new SegmentedChoice(
        QStringLiteral("Span"),
        {QStringLiteral("Day"), QStringLiteral("Week"), QStringLiteral("Year")}, theme);
    auto* const after = new QLineEdit;
    for (auto* const each : std::initializer_list<QWidget*>{before, few, after}) {
        row->addWidget(each);
    }
    few->choose(1);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const QSignalSpy chosen(few, &SegmentedChoice::chosenChanged);
    before->setFocus();
    QTest::keyClick(before, Qt::Key_Tab);
    auto* const first = QApplication::focusWidget();
    EXPECT_EQ(QAccessible::queryAccessibleInterface(first)->role(), QAccessible::RadioButton);
    QTest::keyClick(first, Qt::Key_Right);
    EXPECT_EQ(few->chosen(), 2);
    EXPECT_EQ(chosen.size(), 1);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_TRUE(after->hasFocus());
}

TEST_F(QuietStyleTest, ASwitchIsACheckBoxThatIsPressedAnywhere) {
    Switch onOff(QStringLiteral("Sounds"), theme);
    onOff.resize(300, 40);
    onOff.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&onOff));
    QTest::mouseClick(&onOff, Qt::LeftButton, {}, {150, 20});
    EXPECT_TRUE(onOff.isChecked());
    QTest::keyClick(&onOff, Qt::Key_Space);
    EXPECT_FALSE(onOff.isChecked());
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&onOff)->role(), QAccessible::CheckBox);
}

} // namespace
} // namespace korvex::ui
