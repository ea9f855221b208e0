#include "ui/kit/lists/LazyListView.h"

#include <QApplication>
#include <QScrollBar>
#include <QStringListModel>
#include <QTest>

#include <gtest/gtest.h>

#include <random>

namespace korvex::ui {
namespace {

constexpr int kWidth = 300;
constexpr int kHeight = 200;

/// Rows whose heights are their texts: "17" is 17 pixels high, and guessed to be 12.
class NumberView final : public LazyListView {
public:
    NumberView() {
        resize(kWidth, kHeight);
        setFrameShape(NoFrame);
    }

    Column column() const override {
        const auto width = std::min(viewport()->width(), widest);
        return {.left = (viewport()->width() - width) / 2, .width = width};
    }

    int measurements = 0;
    int widest = kWidth;

protected:
    int measuredHeight(int row) override {
        ++measurements;
        return model()->index(row, 0).data().toString().toInt();
    }
    int estimatedHeight(int) const override { return 12; }
};

struct LazyList {
    explicit LazyList(const QStringList& heights) : model(heights) {
        view.setModel(&model);
        view.show();
        QApplication::processEvents();
    }

    void insert(int row, const QString& height) {
        // Two steps, as QStringListModel has it: the row, then its text.
        model.insertRow(row);
        model.setData(model.index(row), height);
    }

    /// The rows in sight stand one under the other, each with its true height, and fill the view.
    void expectSound(const std::string& when) {
        const auto [first, last] = view.visibleRows();
        if (model.rowCount() == 0) {
            EXPECT_EQ(first, -1) << when;
            return;
        }
        int bottom = view.visualRect(model.index(first)).top();
        EXPECT_LE(bottom, 0) << when;
        for (int row = first; row <= last; ++row) {
            const auto rect = view.visualRect(model.index(row));
            ASSERT_EQ(rect.top(), bottom) << when << ", row " << row;
            ASSERT_EQ(rect.height(), model.index(row).data().toInt()) << when << ", row " << row;
            bottom += rect.height();
        }
        const bool reachesEnd = last == model.rowCount() - 1;
        EXPECT_TRUE(bottom >= kHeight || reachesEnd) << when;
        if (reachesEnd && view.verticalScrollBar()->value() > 0) {
            EXPECT_GE(bottom, kHeight) << when << ": a gap under the last row";
        }
    }

    QStringListModel model;
    NumberView view;
};

QStringList randomHeights(int count, std::mt19937& random) {
    QStringList result;
    for (int i = 0; i < count; ++i) {
        result.append(QString::number(std::uniform_int_distribution<int>(1, 60)(random)));
    }
    return result;
}

TEST(LazyListView, ARowHigherThanTheViewJumpsOnlyWhenLittleOfItIsSeen) {
    LazyList list({"30", "500", "30"});
    const auto top = [&] { return list.view.visualRect(list.model.index(1)).top(); };
    const auto scrollTo = [&](int value) {
        list.view.verticalScrollBar()->setValue(value);
        list.view.scrollTo(list.model.index(1));
    };
    scrollTo(0);
    EXPECT_EQ(top(), 30) << "most of what is seen is this row";
    scrollTo(200);
    EXPECT_EQ(top(), -170);
    list.view.verticalScrollBar()->setValue(list.view.verticalScrollBar()->maximum());
    const int last = top();
    list.view.scrollTo(list.model.index(1));
    EXPECT_EQ(top(), last);
}

TEST(LazyListView, MeasuresOnlyWhatIsSeen) {
    std::mt19937 random(1);
    LazyList list(randomHeights(100'000, random));
    EXPECT_LT(list.view.measurements, 100);
    list.view.scrollToBottom();
    list.view.verticalScrollBar()->setValue(list.view.verticalScrollBar()->maximum() / 2);
    list.insert(0, QStringLiteral("20"));
    EXPECT_LT(list.view.measurements, 600);
    list.expectSound("in the middle");
}

TEST(LazyListView, StaysSoundThroughAnyChanges) {
    std::mt19937 random(2);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    LazyList list(randomHeights(60, random));
    for (int change = 0; change < 1500; ++change) {
        const int count = list.model.rowCount();
        const int what = count == 0 ? 0 : pick(0, 6);
        const auto when = "change " + std::to_string(change) + " of kind " + std::to_string(what);
        switch (what) {
        case 0:
            list.insert(pick(0, count), QString::number(pick(1, 60)));
            break;
        case 1: {
            const int first = pick(0, count - 1);
            list.model.removeRows(first, pick(1, std::min(3, count - first)));
            break;
        }
        case 2: {
            const int from = pick(0, count - 1);
            const int to = pick(0, count);
            if (to != from && to != from + 1) {
                list.model.moveRow({}, from, {}, to);
            }
            break;
        }
        case 3:
            list.model.setData(list.model.index(pick(0, count - 1)), QString::number(pick(1, 60)));
            break;
        case 4:
            list.view.verticalScrollBar()->setValue(pick(0, 3000));
            break;
        case 5:
            list.view.verticalScrollBar()->setValue(list.view.verticalScrollBar()->value() +
                                                    pick(-80, 80));
            break;
        default:
            list.view.scrollTo(list.model.index(pick(0, count - 1)),
                               static_cast<QAbstractItemView::ScrollHint>(pick(0, 3)));
            break;
        }
        list.expectSound(when);
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

TEST(LazyListView, WhatIsReadStaysWhereItIsWhateverHappensAround) {
    std::mt19937 random(3);
    LazyList list(randomHeights(2000, random));
    list.view.scrollTo(list.model.index(1000), QAbstractItemView::PositionAtTop);
    const QPersistentModelIndex read = list.model.index(1002);
    const int y = list.view.visualRect(read).top();
    const auto expectUnmoved = [&](const char* what) {
        EXPECT_EQ(list.view.visualRect(read).top(), y) << what;
    };
    list.insert(0, QStringLiteral("44"));
    expectUnmoved("a row before the screen");
    list.model.removeRows(10, 300);
    expectUnmoved("rows go before the screen");
    list.model.moveRow({}, 5, {}, list.model.rowCount());
    expectUnmoved("a row goes from before to behind");
    list.model.moveRow({}, list.model.rowCount() - 1, {}, 0);
    expectUnmoved("a row goes from behind to before");
    list.model.setData(list.model.index(3), QStringLiteral("5"));
    expectUnmoved("a height changes before the screen");
    list.view.measureAllAgain();
    expectUnmoved("all is measured again");
}

TEST(LazyListView, ScrollingUpOverWrongGuessesMovesByWhatWasAskedFor) {
    std::mt19937 random(4);
    LazyList list(randomHeights(500, random));
    list.view.scrollTo(list.model.index(300), QAbstractItemView::PositionAtTop);
    for (int step = 0; step < 50; ++step) {
        const auto [first, last] = list.view.visibleRows();
        const auto index = list.model.index(first);
        const int before = list.view.visualRect(index).top();
        list.view.verticalScrollBar()->setValue(list.view.verticalScrollBar()->value() - 37);
        ASSERT_EQ(list.view.visualRect(index).top(), before + 37) << "step " << step;
    }
}

TEST(LazyListView, ARowIsFoundWhereItIsShown) {
    std::mt19937 random(5);
    LazyList list(randomHeights(100, random));
    list.view.scrollTo(list.model.index(50), QAbstractItemView::PositionAtCenter);
    const auto [first, last] = list.view.visibleRows();
    for (int row = first + 1; row < last; ++row) {
        const auto rect = list.view.visualRect(list.model.index(row));
        EXPECT_EQ(list.view.indexAt(rect.topLeft()).row(), row);
        EXPECT_EQ(list.view.indexAt(rect.bottomRight()).row(), row);
    }
    list.model.removeRows(0, 98);
    EXPECT_FALSE(list.view.indexAt({10, kHeight - 1}).isValid()) << "below the last row";
}

TEST(LazyListView, RowsStandInTheirColumnAndAreMeasuredForItsWidthOnly) {
    LazyList list({"30", "40", "50"});
    auto& view = list.view;
    view.resize(2 * kWidth, kHeight);
    EXPECT_EQ(view.visualRect(list.model.index(1)), QRect(kWidth / 2, 30, kWidth, 40));
    for (const int x : {1, kWidth / 2 - 1, 3 * kWidth / 2, 2 * kWidth - 1}) {
        EXPECT_FALSE(view.indexAt({x, 35}).isValid()) << x;
        EXPECT_EQ(view.indexBeside(35).row(), 1);
    }
    EXPECT_EQ(view.indexAt({kWidth / 2, 35}).row(), 1);
    EXPECT_EQ(view.indexAt({3 * kWidth / 2 - 1, 35}).row(), 1);
    const int before = view.measurements;
    view.resize(3 * kWidth, kHeight);
    EXPECT_EQ(view.visualRect(list.model.index(1)).left(), kWidth);
    EXPECT_EQ(view.measurements, before) << "no row has another width";
    view.resize(kWidth / 2, kHeight);
    EXPECT_GT(view.measurements, before);
}

TEST(LazyListView, ARowHigherThanTheViewIsWalkedThroughBeforeTheNext) {
    LazyList list({"50", "900", "50"});
    auto& view = list.view;
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(&view, key);
        return view.currentIndex().row();
    };
    view.setCurrentIndex(list.model.index(0));
    int steps = 0;
    int seen = 0; // down to this pixel of the high row
    while (press(Qt::Key_Down) < 2 && steps < 100) {
        const auto place = view.visualRect(list.model.index(1));
        EXPECT_LE(-place.top(), seen) << "nothing of it is passed over";
        seen = kHeight - place.top();
        ++steps;
    }
    EXPECT_GE(seen, 900);
    EXPECT_GT(steps, 5);
    EXPECT_EQ(press(Qt::Key_Up), 1);
    EXPECT_GT(view.visualRect(list.model.index(1)).bottom(), kHeight / 2) << "from its end";
    EXPECT_EQ(press(Qt::Key_PageUp), 1);
    EXPECT_LT(view.visualRect(list.model.index(1)).top(), 0);
    for (int i = 0; i < 6; ++i) {
        press(Qt::Key_PageUp);
    }
    EXPECT_EQ(view.currentIndex().row(), 0);
}

} // namespace
} // namespace korvex::ui
