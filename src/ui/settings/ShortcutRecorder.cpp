#include "ui/settings/ShortcutRecorder.h"

#include "app/KeyCodes.h"

#include "ui/kit/words/Text.h"
#include "ui/settings/ShortcutWords.h"

#include <QGuiApplication>
#include <QKeyEvent>

#include <algorithm>
#include <chrono>

namespace korvex::ui {

namespace {

using Shortcut = app::QuickEntryShortcut;

constexpr std::chrono::seconds kLongest{30};

bool isModifier(int key) {
    switch (key) {
    case Qt::Key_Control:
    case Qt::Key_Shift:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

/// Qt says of a modifier's own press what was held before it, and of its release what was held
/// then.
Qt::KeyboardModifiers heldWith(const QKeyEvent& event) {
    auto held = event.modifiers();
    const auto set = [&](int key, Qt::KeyboardModifier modifier) {
        if (event.key() == key) {
            held.setFlag(modifier, event.type() == QEvent::KeyPress);
        }
    };
    set(Qt::Key_Control, Qt::ControlModifier);
    set(Qt::Key_Shift, Qt::ShiftModifier);
    set(Qt::Key_Alt, Qt::AltModifier);
    set(Qt::Key_Meta, Qt::MetaModifier);
    set(Qt::Key_Super_L, Qt::MetaModifier);
    set(Qt::Key_Super_R, Qt::MetaModifier);
    return held;
}

Shortcut shortcutOf(std::uint32_t keyCode, Qt::KeyboardModifiers held) {
    return Shortcut::of({.keyCode = keyCode,
                         .command = held.testFlag(Qt::ControlModifier),
                         .shift = held.testFlag(Qt::ShiftModifier),
                         .option = held.testFlag(Qt::AltModifier),
                         .control = held.testFlag(Qt::MetaModifier)});
}

/// So that keys come here which other programs and the desktop have, too. Not every platform can.
bool canGrabKeyboard() {
    return QGuiApplication::platformName() == QStringLiteral("xcb");
}

} // namespace

ShortcutRecorder::ShortcutRecorder(app::GlobalHotkeyManager& hotkey, QWidget* parent)
    : QPushButton(parent), m_hotkey(hotkey) {
    setAutoDefault(true);
    connect(this, &QPushButton::clicked, this, [this] { m_isRecording ? stop() : start(); });
    m_limit.setSingleShot(true);
    m_limit.setInterval(kLongest);
    connect(&m_limit, &QTimer::timeout, this, &ShortcutRecorder::stop);
    showText();
}

ShortcutRecorder::~ShortcutRecorder() {
    if (m_isRecording) {
        m_hotkey.resume();
    }
}

void ShortcutRecorder::show(const Shortcut& shortcut) {
    m_shortcut = shortcut;
    if (!m_isRecording) {
        showText();
    }
}

void ShortcutRecorder::start() {
    m_isRecording = true;
    m_hotkey.pause();
    setFocus(Qt::OtherFocusReason);
    if (canGrabKeyboard()) {
        grabKeyboard();
    }
    m_limit.start();
    setText(tr("Press keys…"));
    setAccessibleName(tr("Press the keys of the shortcut"));
    Q_EMIT recordingChanged();
}

void ShortcutRecorder::stop() {
    if (!m_isRecording) {
        return;
    }
    m_isRecording = false;
    m_limit.stop();
    if (canGrabKeyboard()) {
        releaseKeyboard();
    }
    m_hotkey.resume();
    showText();
    Q_EMIT recordingChanged();
}

void ShortcutRecorder::take(const QKeyEvent& event) {
    const auto held = heldWith(event);
    if (isModifier(event.key()) || event.type() == QEvent::KeyRelease) {
        showHeld(shortcutOf(0, held));
        return;
    }
    if (event.isAutoRepeat()) {
        return; // such as of Return, which has started this
    }
    constexpr auto kMakesOne = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    if (event.key() == Qt::Key_Escape && (held & kMakesOne) == 0) {
        stop();
        return;
    }
    const auto keyCode = m_hotkey.keyCode(event.nativeScanCode());
    const auto shortcut = shortcutOf(keyCode.value_or(app::kKeyCodeCount), held);
    if (!shortcut.isValid()) {
        Q_EMIT refused();
        return;
    }
    stop();
    Q_EMIT recorded(shortcut);
}

void ShortcutRecorder::showHeld(const Shortcut& held) {
    // The signs without the key, of which there is none yet.
    const auto key = held.keyDisplayString(m_hotkey.layout());
    const auto signs = held.displayString(m_hotkey.layout());
    const auto shown = toQString(signs.substr(0, signs.size() - key.size()));
    setText(shown.isEmpty() ? tr("Press keys…") : shown + QStringLiteral("…"));
}

void ShortcutRecorder::showText() {
    setText(toQString(m_shortcut.displayString(m_hotkey.layout())));
    setAccessibleName(tr("Shortcut: %1").arg(keyNames(m_shortcut, m_hotkey.layout())));
}

QSize ShortcutRecorder::sizeHint() const {
    // One that keeps its width while it waits.
    const auto waiting = fontMetrics().horizontalAdvance(tr("Press keys…"));
    const auto shown = fontMetrics().horizontalAdvance(text());
    return QPushButton::sizeHint() + QSize(std::max(0, waiting - shown), 0);
}

bool ShortcutRecorder::event(QEvent* event) {
    if (m_isRecording) {
        switch (event->type()) {
        case QEvent::ShortcutOverride: // what is a command elsewhere is none now
            event->accept();
            return true;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            event->accept();
            take(*static_cast<QKeyEvent*>(event));
            return true;
        default:
            break;
        }
    }
    return QPushButton::event(event);
}

void ShortcutRecorder::focusOutEvent(QFocusEvent* event) {
    stop();
    QPushButton::focusOutEvent(event);
}

void ShortcutRecorder::hideEvent(QHideEvent* event) {
    stop();
    QPushButton::hideEvent(event);
}

} // namespace korvex::ui
