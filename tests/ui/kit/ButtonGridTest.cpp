#include "ui/kit/controls/ButtonGrid.h"

#include "ui/WindowFixture.h"

#include <QLineEdit>
#include <QToolButton>

namespace korvex::ui {
namespace {

/// Seven buttons in rows of three, between two fields.
class ButtonGridTest : public tests::WindowFixture {
protected:
    ButtonGridTest() {
        new QLineEdit(&window);
        grid = new ButtonGrid(QStringLiteral("Icon"), 3, theme, &window);
        for (int i = 0; i < 7; ++i) {
            grid->add(new QToolButton);
        }
        after = new QLineEdit(&window);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    static void press(int key) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
    }
    /// The number of the button that has the keyboard; -1 for none.
    int focused() const {
        for (std::size_t i = 0; i < grid->buttons().size(); ++i) {
            if (grid->buttons()[i]->hasFocus()) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }

    QWidget window;
    ButtonGrid* grid;
    QLineEdit* after;
};

TEST_F(ButtonGridTest, ArrowsWalkInBothDirectionsAndStopAtTheEdges) {
    struct Step {
        int key;
        int place;
    };
    grid->buttons()[0]->setFocus();
    for (const auto& step : {Step{Qt::Key_Left, 0}, Step{Qt::Key_Up, 0}, Step{Qt::Key_Right, 1},
                             Step{Qt::Key_Right, 2}, Step{Qt::Key_Right, 2}, Step{Qt::Key_Down, 5},
                             Step{Qt::Key_Down, 5}, Step{Qt::Key_Left, 4}, Step{Qt::Key_Left, 3},
                             Step{Qt::Key_Left, 3}, Step{Qt::Key_Down, 6}, Step{Qt::Key_Right, 6},
                             Step{Qt::Key_Up, 3}}) {
        press(step.key);
        EXPECT_EQ(focused(), step.place);
    }
    QApplication::setLayoutDirection(Qt::RightToLeft);
    press(Qt::Key_Left);
    EXPECT_EQ(focused(), 4) << "towards the end of the line";
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_F(ButtonGridTest, IsOnePlaceInTheTabOrder) {
    grid->choose(4);
    window.findChild<QLineEdit*>()->setFocus();
    press(Qt::Key_Tab);
    EXPECT_EQ(focused(), 4) << "on the chosen one";
    press(Qt::Key_Up);
    grid->choose(1);
    press(Qt::Key_Tab);
    EXPECT_TRUE(after->hasFocus());
    press(Qt::Key_Backtab);
    EXPECT_EQ(focused(), 1);
}

} // namespace
} // namespace korvex::ui
