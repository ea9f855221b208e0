#pragma once

#include "base/Uuid.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/kit/theme/Theme.h"
#include "ui/kit/words/Refusal.h"

#include <QWidget>

#include <cstdint>
#include <initializer_list>

class QLabel;
class QVBoxLayout;

namespace korvex::ui {

/// What a window shows of the store, one page at a time: from above a header, bars, and the
/// content. Messages, and a hint while there is nothing to show, lie over the content, so that no
/// row moves when they come and go. Main thread.
class Page : public QWidget {
    Q_OBJECT

public:
    /// Names the window while the page is in sight; empty for the name of the program alone.
    virtual QString title() const = 0;
    /// Gives the keyboard to the content. A page is no focus proxy of that: Tab would come to the
    /// content first and pass over the header.
    virtual void takeKeyboard() = 0;
    /// The store's records have changed while the page is in sight, or it is about to come in
    /// sight. A page that follows the store by itself has nothing to do.
    virtual void storeChanged() {}
    /// Stores what is being edited, before something else is shown or the window closes. False when
    /// that was refused: then the page is to stay in sight, and says why.
    virtual bool leave() { return true; }
    /// Chooses the row of this record and gives it the keyboard. False when the page lists no such
    /// row.
    virtual bool showRecord(const base::Uuid&) { return false; }

    ErrorBanner& banner() { return *m_banner; }
    /// Carries out what the user asked for. The banner is cleared first, so that it says why this
    /// was refused, or what went wrong while the page took the change in. True when it was done.
    template <typename Operation>
    bool perform(Operation&& operation) {
        m_banner->clear();
        return follow(operation);
    }

Q_SIGNALS:
    /// The change of the window that this step of its undo stands for is to be taken back.
    void undoRequested(std::uint64_t step);

protected:
    Page(const Theme& theme, QWidget* parent);

    /// Call once, with widgets that have no parent yet: so the keyboard goes through them in this
    /// order. The content takes the room that is left below `top`.
    void layOut(std::initializer_list<QWidget*> top, QWidget& content);
    /// Puts the bar directly above the content, also for the keyboard.
    void insertBar(QWidget& bar);
    /// Says over the content why there is nothing in it; an empty text says nothing.
    void setHint(const QString& text);
    /// Takes in what the store says, which nobody asked for: what the banner tells stays, unless
    /// there is a refusal to tell. True when it was done.
    template <typename Operation>
    bool follow(Operation&& operation) {
        const auto refused = refusal(operation);
        if (refused) {
            m_banner->showMessage(*refused);
        }
        return !refused;
    }

private:
    QVBoxLayout* m_column;
    ErrorBanner* m_banner;
    QLabel* m_hint;
    QWidget* m_content = nullptr;
};

} // namespace korvex::ui
