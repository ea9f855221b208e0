#pragma once

#include "app/QuickEntrySetup.h"

#include <QString>

namespace korvex::ui {

/// What keys of this keyboard it is: "Ctrl+Alt+Space", "Alt+Tab".
QString keyNames(const app::QuickEntryShortcut& shortcut, const app::KeyboardLayout& layout);
/// The same behind its signs, for a sentence: "⌥⌘ Space (Ctrl+Alt+Space)".
QString shortcutWords(const app::QuickEntryShortcut& shortcut, const app::KeyboardLayout& layout);
/// The keys that open Quick Entry now, within a sentence.
QString readyKeys(app::GlobalHotkeyManager& hotkey);
/// What is said of keys that are no shortcut.
QString noShortcutText();
/// Which keys the signs stand for.
QString signsOfKeys();

/// Why the shortcut is not registered, and who has it, as far as that is known.
QString issueText(const app::GlobalHotkeyManager::Issue& issue,
                  const app::QuickEntryShortcut& shortcut, const app::QuickEntrySetup& setup);
QString conflictText(const app::QuickEntryShortcut& shortcut, const app::KeyboardLayout& layout);
/// What the user does with the command on this desktop, in two sentences.
QString managedAdvice(app::DesktopKind desktop);

} // namespace korvex::ui
