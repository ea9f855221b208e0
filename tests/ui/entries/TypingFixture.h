#pragma once

#include "ui/entries/BoardPageFixture.h"

#include <QAbstractButton>
#include <QTextEdit>

namespace korvex::tests {

inline constexpr double kPause = ui::TypingTimer::kPause.count();
inline constexpr double kLongest = ui::TypingTimer::kLongest.count();

/// A board's page that is typed on, and whose entries another program writes.
class TypingFixture : public BoardPageFixture {
protected:
    TypingFixture() {
        QObject::connect(&page, &ui::BoardPage::resumeRequested, &page,
                         [this](const app::Draft& draft) { page.resume(draft, kWhy); });
        QObject::connect(&page, &ui::BoardPage::undoRequested, &page,
                         [this](std::uint64_t step) { own.undo.undo(step); });
    }

    bool isEditing() { return qobject_cast<QTextEdit*>(page.focusWidget()) != nullptr; }
    QTextEdit& field() { return *qobject_cast<QTextEdit*>(page.focusWidget()); }
    QString shown() { return field().toPlainText(); }
    void type(const char* text) { QTest::keyClicks(page.focusWidget(), QString::fromUtf8(text)); }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(page.focusWidget(), static_cast<Qt::Key>(which), modifiers);
    }
    void setCaret(int position) {
        auto cursor = field().textCursor();
        cursor.setPosition(position);
        field().setTextCursor(cursor);
    }
    void press(const char* action) {
        for (auto* const button : page.findChildren<QAbstractButton*>()) {
            if (button->isVisible() && button->text() == QString::fromUtf8(action)) {
                button->click();
                return;
            }
        }
        ADD_FAILURE() << "nothing offers: " << action;
    }
    void discard() { press("Discard"); }
    void empty() {
        field().selectAll();
        key(Qt::Key_Delete);
    }
    /// What another program makes of an entry; `known` says whether anybody has told of it here.
    enum class Known { yes, no };
    void writeElsewhere(const model::Entry& entry, const char* text, Known known = Known::yes) {
        const auto write = [&](StoreClient& client) {
            auto& their = theirs(client, entry);
            if (their.isTodo()) {
                client.entries.updateTodo(their, text, clock.now());
            } else {
                client.entries.updateText(their, plain(text), clock.now());
            }
        };
        if (known == Known::yes) {
            elsewhere(write);
        } else {
            StoreClient hidden(folder / "Primary.store", log);
            write(hidden);
        }
    }
    /// While it lives, another program keeps the store busy.
    std::unique_ptr<store::LockedStep> keepBusy() {
        elsewhere([](const auto&) {});
        return std::make_unique<store::LockedStep>(other->context);
    }
    const QString kWhy = QStringLiteral("This was typed before.");
    std::vector<app::Draft> drafts() { return workspace.drafts.find().drafts; }
};

} // namespace korvex::tests
