#pragma once

#include "app/GlobalHotkeyManager.h"

#include <QPushButton>
#include <QTimer>

namespace korvex::ui {

/// Shows a shortcut. Pressed, it waits for keys, of which the first valid ones are taken as a new
/// one: those too that mean something else elsewhere, and without what they do there. Escape, a
/// second press, whatever takes the keyboard away and half a minute end that: meanwhile nobody else
/// gets keys, as to lock the screen. Main thread; the manager outlives it.
class ShortcutRecorder final : public QPushButton {
    Q_OBJECT

public:
    explicit ShortcutRecorder(app::GlobalHotkeyManager& hotkey, QWidget* parent = nullptr);
    ~ShortcutRecorder() override;

    void show(const app::QuickEntryShortcut& shortcut);
    bool isRecording() const { return m_isRecording; }

    QSize sizeHint() const override;

Q_SIGNALS:
    void recorded(const korvex::app::QuickEntryShortcut& shortcut);
    /// What was pressed is no shortcut; it goes on waiting.
    void refused();
    void recordingChanged();

protected:
    bool event(QEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void start();
    void stop();
    void take(const QKeyEvent& event);
    void showHeld(const app::QuickEntryShortcut& held);
    void showText();

    app::GlobalHotkeyManager& m_hotkey;
    app::QuickEntryShortcut m_shortcut;
    bool m_isRecording = false;
    QTimer m_limit;
};

} // namespace korvex::ui
