// The least that a Qt program can do for a key that is pressed anywhere: it grabs the key, and
// shows a field, which gets the keyboard. Says so each time once that is painted and has it; Escape
// takes it away.

#include "support/XKeys.h"

#include "platform/qt/WindowActivation.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QSocketNotifier>
#include <QTimer>
#include <QWindow>

#include <cstdio>

namespace {

using namespace korvex;

class Field final : public QLineEdit {
protected:
    void paintEvent(QPaintEvent* event) override {
        QLineEdit::paintEvent(event);
        if (!m_isPainted) {
            m_isPainted = true;
            QTimer::singleShot(0, this, &Field::tellIfReady); // the window system has it by then
        }
    }
    bool event(QEvent* event) override {
        const auto isDone = QLineEdit::event(event);
        if (event->type() == QEvent::WindowActivate) {
            tellIfReady();
        } else if (event->type() == QEvent::Hide) {
            m_isPainted = false;
        }
        return isDone;
    }
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Escape) {
            hide();
        } else {
            QLineEdit::keyPressEvent(event);
        }
    }

private:
    void tellIfReady() {
        if (m_isPainted && isActiveWindow()) {
            std::fputs("shown\n", stderr);
            std::fflush(stderr);
        }
    }

    bool m_isPainted = false;
};

} // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    QApplication::setQuitOnLastWindowClosed(false);
    const bench::XConnection connection(xcb_connect(nullptr, nullptr));
    const bench::XAnswer<xcb_generic_error_t> refused(xcb_request_check(
        connection.get(), xcb_grab_key_checked(connection.get(), 0, bench::rootOf(connection.get()),
                                               bench::kShortcutModifiers,
                                               bench::keyOf(connection.get(), bench::kLetterKey),
                                               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    if (refused) {
        std::fputs("another program has the key\n", stderr);
        return EXIT_FAILURE;
    }
    Field field;
    field.resize(560, 120);
    field.winId();
    QSocketNotifier events(xcb_get_file_descriptor(connection.get()), QSocketNotifier::Read);
    QObject::connect(&events, &QSocketNotifier::activated, &field, [&] {
        while (
            const bench::XAnswer<xcb_generic_event_t> event{xcb_poll_for_event(connection.get())}) {
            if (event->response_type == XCB_KEY_PRESS) {
                field.show();
                field.raise();
                const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(*event);
                platform::qt::activateCalledWindow(*field.windowHandle(), press.time);
            }
        }
    });
    std::fputs("listening\n", stderr);
    std::fflush(stderr);
    return QApplication::exec();
}
