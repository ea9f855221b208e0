#include "ui/settings/ShortcutWords.h"

#include "ui/kit/words/Text.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvex::ui {

namespace {

using Shortcut = app::QuickEntryShortcut;
using Issue = app::GlobalHotkeyManager::Issue;
using State = app::HotkeyStatus::State;

QString tr(const char* text) {
    return QCoreApplication::translate("korvex::ui::ShortcutWords", text);
}

/// Empty for those of whom nothing is known.
QString nameOf(app::DesktopKind desktop) {
    switch (desktop) {
    case app::DesktopKind::gnome:
        return QStringLiteral("GNOME");
    case app::DesktopKind::kde:
        return QStringLiteral("Plasma");
    case app::DesktopKind::xfce:
        return QStringLiteral("Xfce");
    case app::DesktopKind::wlroots:
    case app::DesktopKind::other:
        break;
    }
    return {};
}

/// What is printed on a key that signs stand for, or nothing, elsewhere. By key code.
constexpr std::pair<std::uint32_t, const char*> kKeyNames[] = {
    {36, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Return")},
    {48, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Tab")},
    {51, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Backspace")},
    {53, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Escape")},
    {71, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Num Lock")},
    {76, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Enter")},
    {110, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Menu")},
    {114, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Insert")},
    {115, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Home")},
    {116, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Page Up")},
    {117, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Delete")},
    {119, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "End")},
    {121, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Page Down")},
    {123, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Left")},
    {124, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Right")},
    {125, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Down")},
    {126, QT_TRANSLATE_NOOP("korvex::ui::ShortcutWords", "Up")},
};

QString keyName(const Shortcut& shortcut, const app::KeyboardLayout& layout) {
    const auto* const found =
        std::find_if(std::begin(kKeyNames), std::end(kKeyNames),
                     [&](const auto& each) { return each.first == shortcut.keyCode; });
    return found == std::end(kKeyNames) ? toQString(shortcut.keyDisplayString(layout))
                                        : tr(found->second);
}

} // namespace

QString keyNames(const Shortcut& shortcut, const app::KeyboardLayout& layout) {
    const std::pair<std::uint32_t, QString> names[] = {{Shortcut::kControl, tr("Super")},
                                                       {Shortcut::kCommand, tr("Ctrl")},
                                                       {Shortcut::kOption, tr("Alt")},
                                                       {Shortcut::kShift, tr("Shift")}};
    QString text;
    for (const auto& [modifier, name] : names) {
        if ((shortcut.modifiers & modifier) != 0) {
            text += name + QLatin1Char('+');
        }
    }
    return text + keyName(shortcut, layout);
}

QString shortcutWords(const Shortcut& shortcut, const app::KeyboardLayout& layout) {
    return tr("%1 %2").arg(inOnePiece(toQString(shortcut.displayString(layout))),
                           inOnePiece(tr("(%1)").arg(keyNames(shortcut, layout))));
}

QString readyKeys(app::GlobalHotkeyManager& hotkey) {
    if (const auto& shortcut = hotkey.activeShortcut()) {
        return shortcutWords(*shortcut, hotkey.layout());
    }
    const auto& trigger = hotkey.trigger();
    return trigger && !trigger->empty() ? toQString(*trigger)
                                        : tr("the shortcut that your desktop has for it");
}

QString noShortcutText() {
    return tr("Include Command, Option or Control with a key.");
}

QString signsOfKeys() {
    return tr("On this keyboard ⌘ Command is Ctrl, ⌥ Option is Alt, ⌃ Control is Super, the key "
              "with the logo, and ⇧ is Shift.");
}

QString issueText(const Issue& issue, const Shortcut& shortcut, const app::QuickEntrySetup& setup) {
    const auto& layout = setup.hotkey.layout();
    if (issue.kind == Issue::Kind::invalid) {
        return shortcut.isValid() ? conflictText(shortcut, layout) : noShortcutText();
    }
    const auto words = shortcutWords(shortcut, layout);
    if (issue.status.code == app::HotkeyStatus::kNoSuchKey) {
        return tr("This keyboard has no key or modifier for %1.").arg(words);
    }
    switch (issue.status.state) {
    case State::conflict:
        if (shortcut == Shortcut() && setup.desktop == app::DesktopKind::kde) {
            return tr("%1 has %2 itself, for its search (KRunner): programs cannot have it.")
                .arg(nameOf(setup.desktop), words);
        }
        if (shortcut == Shortcut() && !nameOf(setup.desktop).isEmpty()) {
            return tr("%1 has %2 itself, for the menu of windows: programs cannot have it.")
                .arg(nameOf(setup.desktop), words);
        }
        return shortcut == Shortcut()
                   ? tr("%1 is taken, as a rule by the window manager for the menu of windows.")
                         .arg(words)
                   : tr("%1 is taken by the desktop or by another program; the system does not "
                        "say which.")
                         .arg(words);
    case State::declined:
        return tr("Your desktop has asked whether Korvex may have a shortcut, and the answer was "
                  "no.");
    case State::registered:
    case State::boundByDesktop:
    case State::asked:
    case State::unavailable:
    case State::managedByDesktop:
        break;
    }
    return tr("The system does not give %1 to programs (%2).").arg(words).arg(issue.status.code);
}

QString conflictText(const Shortcut& shortcut, const app::KeyboardLayout& layout) {
    return tr("%1 is a command in the windows of Korvex.").arg(shortcutWords(shortcut, layout));
}

QString managedAdvice(app::DesktopKind desktop) {
    switch (desktop) {
    case app::DesktopKind::gnome:
        return tr("Open Settings, Keyboard, View and Customize Shortcuts, Custom Shortcuts, and "
                  "add one with this command. Then set the keys that you want for it.");
    case app::DesktopKind::kde:
        return tr("Open System Settings, Shortcuts, and add a new command: this one. Then add the "
                  "keys that you want for it, and apply.");
    case app::DesktopKind::xfce:
        return tr("Open Settings, Keyboard, Application Shortcuts, and add this command. Then "
                  "press the keys that you want for it.");
    case app::DesktopKind::wlroots:
        return tr("Bind keys to this command in the configuration of your window manager; in sway "
                  "that is a line such as “bindsym Mod1+space exec” with the command behind it. "
                  "Then load the configuration again.");
    case app::DesktopKind::other:
        break;
    }
    return tr("Look for keyboard shortcuts in the settings of your desktop, and add one that runs "
              "this command. Then set the keys that you want for it.");
}

} // namespace korvex::ui
