#include "ui/settings/ShortcutRows.h"

#include "ui/kit/words/Text.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/ShortcutRecorder.h"
#include "ui/settings/ShortcutWords.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QPushButton>

#include <algorithm>

namespace korvex::ui {

namespace {

using Shortcut = app::QuickEntryShortcut;
using State = app::HotkeyStatus::State;

} // namespace

ShortcutRows::ShortcutRows(SettingsGroup& group, app::QuickEntrySetup& setup,
                           app::AppPreferences& preferences, const Theme& theme, QObject* parent)
    : QObject(parent), m_setup(setup), m_preferences(preferences) {
    addRecorder(group, theme);
    addDesktops(group, theme);
    m_layouts = setup.hotkey.layout().didChange().connect([this] { follow(); });
    m_outcomes = setup.hotkey.didChange().connect([this] {
        m_offeredBeside.reset();
        m_refusal.clear(); // another one works, or none does
    });
}

void ShortcutRows::addRecorder(SettingsGroup& group, const Theme& theme) {
    m_recorder = new ShortcutRecorder(m_setup.hotkey);
    m_reset = new QPushButton(tr("Reset"));
    m_recorderRow = &group.addRow(tr("Shortcut"),
                                  settingsButtons(tr("Shortcut"), {m_recorder, m_reset}, theme));
    connect(m_recorder, &ShortcutRecorder::recorded, this, &ShortcutRows::record);
    connect(m_recorder, &ShortcutRecorder::refused, this, [this] {
        m_refusal = noShortcutText();
        followRecorder();
    });
    connect(m_recorder, &ShortcutRecorder::recordingChanged, this, [this] {
        m_refusal.clear();
        followRecorder();
    });
    connect(m_reset, &QPushButton::clicked, this, [this] {
        m_refusal.clear();
        setShortcut(Shortcut());
    });
    for (auto*& offer : m_offers) {
        offer = new QPushButton;
    }
    m_offersRow = &group.addRow(
        tr("Free shortcuts"),
        settingsButtons(tr("Free shortcuts"), {m_offers[0], m_offers[1], m_offers[2]}, theme));
    for (std::size_t i = 0; i < kOffered; ++i) {
        connect(m_offers.at(i), &QPushButton::clicked, this, [this, i] {
            if (i < m_offered.size()) {
                m_recorder->setFocus(Qt::OtherFocusReason); // this button goes
                setShortcut(m_offered[i]);
            }
        });
    }
}

void ShortcutRows::addDesktops(SettingsGroup& group, const Theme& theme) {
    m_trigger = settingsValue(theme);
    m_triggerRow = &group.addRow(tr("Shortcut"), m_trigger);
    auto* const change = new QPushButton(tr("Change…"));
    m_changeRow = &group.addRow(tr("Settings of your desktop"), change);
    connect(change, &QPushButton::clicked, this, [this] { m_setup.hotkey.openDesktopSettings(); });
    auto* const again = new QPushButton(tr("Ask Again"));
    m_againRow = &group.addRow(tr("Shortcut"), again);
    connect(again, &QPushButton::clicked, this, [this] { m_setup.hotkey.tryAgain(); });
    m_copy = new QPushButton(tr("Copy"));
    m_commandRow = &group.addRow(tr("Command"), m_copy);
    m_command = new SettingsLabel(SettingsLabel::Kind::name, {}, theme);
    m_command->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_commandRow->addBelow(m_command);
    connect(m_copy, &QPushButton::clicked, this, [this] {
        QGuiApplication::clipboard()->setText(toQString(m_setup.command));
        m_copy->setText(tr("Copied"));
    });
}

void ShortcutRows::record(const Shortcut& shortcut) {
    if (shortcut.conflictsWithAppCommand()) {
        m_refusal = conflictText(shortcut, m_setup.hotkey.layout());
        followRecorder();
    } else {
        setShortcut(shortcut);
    }
}

void ShortcutRows::setShortcut(const Shortcut& shortcut) {
    auto& hotkey = m_setup.hotkey;
    if (const auto& works = hotkey.activeShortcut(); works && works != shortcut) {
        if (const auto issue = hotkey.issueOf(shortcut)) {
            m_refusal = tr("%1 %2 stays.")
                            .arg(issueText(*issue, shortcut, m_setup),
                                 inOnePiece(keyNames(*works, hotkey.layout())));
            followRecorder();
            return;
        }
    }
    m_offeredBeside.reset();
    const auto isAnother = shortcut != m_preferences.quickEntryShortcut();
    m_preferences.setQuickEntryShortcut(shortcut); // which asks for another one
    if (!isAnother) {
        hotkey.tryAgain();
    }
    follow();
}

void ShortcutRows::tryAgain() {
    if (m_setup.hotkey.isRecordable()) {
        m_offeredBeside.reset();
        m_setup.hotkey.tryAgain();
    }
}

void ShortcutRows::follow() {
    followRecorder();
    followOffers();
    followDesktop();
}

void ShortcutRows::followRecorder() {
    auto& hotkey = m_setup.hotkey;
    const auto& shortcut = m_preferences.quickEntryShortcut();
    m_recorderRow->setVisible(hotkey.isRecordable());
    m_recorder->show(shortcut);
    m_reset->setVisible(shortcut != Shortcut());
    const auto& issue = hotkey.issue();
    const auto keys =
        hotkey.activeShortcut()
            ? tr("%1 opens Quick Entry.")
                      .arg(inOnePiece(keyNames(*hotkey.activeShortcut(), hotkey.layout()))) +
                  QLatin1Char('\n')
            : QString();
    m_recorderRow->setNote(keys +
                           tr("Press to record a shortcut. Include Command, Option or Control. "
                              "Escape cancels.") +
                           QLatin1Char('\n') + signsOfKeys());
    m_recorderRow->setRefusal(!m_refusal.isEmpty() ? m_refusal
                              : issue              ? issueText(*issue, shortcut, m_setup)
                                                   : QString());
}

void ShortcutRows::followOffers() {
    auto& hotkey = m_setup.hotkey;
    const auto& issue = hotkey.issue();
    if (m_recorder->isRecording()) {
        return; // nothing moves under the user's hand
    }
    const auto& shortcut = m_preferences.quickEntryShortcut();
    if (m_offeredBeside != shortcut) {
        m_offered = issue && hotkey.isRecordable() ? hotkey.freeAlternatives(kOffered)
                                                   : std::vector<Shortcut>();
        m_offeredBeside = shortcut;
    }
    m_offersRow->setVisible(!m_offered.empty());
    for (std::size_t i = 0; i < kOffered; ++i) {
        auto& button = *m_offers.at(i);
        button.setVisible(i < m_offered.size());
        if (i < m_offered.size()) {
            button.setText(toQString(m_offered[i].displayString(hotkey.layout())));
            const auto names = keyNames(m_offered[i], hotkey.layout());
            button.setToolTip(names);
            button.setAccessibleName(tr("Use %1").arg(names));
        }
    }
}

void ShortcutRows::followDesktop() {
    auto& hotkey = m_setup.hotkey;
    const auto& trigger = hotkey.trigger();
    const auto& issue = hotkey.issue();
    const auto isManaged = hotkey.isManagedByDesktop();
    const auto isAsked = !hotkey.isRecordable() && !trigger && !issue && !isManaged;
    m_triggerRow->setVisible(trigger || isAsked);
    m_trigger->say(isAsked                        ? tr("Not set yet")
                   : trigger && !trigger->empty() ? toQString(*trigger)
                                                  : tr("Set in your desktop"));
    m_triggerRow->setNote(isAsked ? tr("Your desktop has been asked for it, and may ask you.")
                                  : tr("Your desktop keeps this shortcut: it is changed in the "
                                       "settings of the desktop."));
    m_changeRow->setVisible(trigger && hotkey.hasDesktopSettings());
    m_againRow->setVisible(issue && !hotkey.isRecordable());
    m_againRow->setRefusal(issue && !hotkey.isRecordable()
                               ? issueText(*issue, m_preferences.quickEntryShortcut(), m_setup)
                               : QString());
    m_commandRow->setVisible(isManaged);
    m_command->say(isManaged ? toQString(m_setup.command) : QString());
    m_commandRow->setNote(isManaged ? tr("Your desktop manages shortcuts itself.") +
                                          QLatin1Char(' ') + managedAdvice(m_setup.desktop)
                                    : QString());
    if (!isManaged) { // it is offered anew when it comes again
        m_copy->setText(tr("Copy"));
    }
}

} // namespace korvex::ui
