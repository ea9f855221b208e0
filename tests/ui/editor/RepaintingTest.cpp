#include "ui/editor/RichTextFixture.h"

#include <QPaintEvent>
#include <QScreen>

namespace korvex::ui {
namespace {

using RepaintingTest = tests::RichTextFixture;

/// From the top of what has been painted last to its bottom.
class PaintedHeight final : public QObject {
public:
    explicit PaintedHeight(QWidget& widget) { widget.installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            height = static_cast<QPaintEvent*>(event)->rect().height();
        }
        return false;
    }

    int height = 0;
};

/// A key has its paragraph painted, and more where more changes its look: no more, and no less.
TEST_F(RepaintingTest, AfterEachKeyTheScreenShowsWhatAFullPaintingShows) {
    QApplication::setCursorFlashTime(0);
    type(QStringLiteral("one<Return><Ctrl+Shift+7>two<Return>three<Return>four<Up><Up>"));
    QApplication::processEvents();
    PaintedHeight painted(*edit.viewport());
    type(QStringLiteral("x"));
    QApplication::processEvents();
    EXPECT_GT(painted.height, 0);
    EXPECT_LT(painted.height, edit.viewport()->height() / 4);
    const auto steps =
        QStringLiteral("<Down> <Tab> <Shift+Tab> <Ctrl+Shift+8> <Up> <Home> <Return> y <Backspace> "
                       "<Backspace> <Ctrl+Z> <Ctrl+Shift+8> "
                       "<Tab> <Ctrl+End> <Return> <Return> <code> a <Return> b <Up> <Backspace> "
                       "<Ctrl+A> <Ctrl+E> <Ctrl+Z> <Ctrl+End> <table> c <Return> <Ctrl+Shift+7> "
                       "<Up> <Return> <Ctrl+A> <Delete> d");
    for (const auto& keys : steps.split(u' ')) {
        type(keys);
        QApplication::processEvents();
        const auto shown = edit.screen()->grabWindow(edit.winId()).toImage();
        ASSERT_FALSE(shown.isNull());
        EXPECT_EQ(shown, edit.grab().toImage().convertToFormat(shown.format()))
            << keys.toStdString();
    }
}

} // namespace
} // namespace korvex::ui
