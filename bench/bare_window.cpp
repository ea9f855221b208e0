// The least that a Qt program can show: a window with one label. Says so once it has been painted,
// in the words of the desktop app, and stays until it is ended.

#include <QApplication>
#include <QLabel>
#include <QTimer>

#include <cstdio>

namespace {

class BareLabel final : public QLabel {
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override {
        QLabel::paintEvent(event);
        if (!m_isPainted) {
            m_isPainted = true;
            // The event loop's next turn: by then the window system has the picture.
            QTimer::singleShot(0, this, [] {
                std::fputs("first paint\n", stderr);
                std::fflush(stderr);
            });
        }
    }

private:
    bool m_isPainted = false;
};

} // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    BareLabel label("Korvex");
    label.resize(1000, 700);
    label.show();
    return QApplication::exec();
}
