#pragma once

#include "base/Uuid.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/kit/theme/Theme.h"
#include "ui/kit/words/Refusal.h"

#include <QWidget>

#include <cstdint>
#include <functional>
#include <initializer_list>

class QAbstractScrollArea;

namespace korvex::ui {

class ColumnLayout;
class PageHint;

/// What a window shows of the store, one page at a time: from above a header, bars, and the
/// content, all in one column. Messages, and a hint while there is nothing to show, lie over the
/// content, so that no row moves when they come and go. Main thread.
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
    /// Ends what is open over the page and stores what is being edited, before something else is
    /// shown or the window closes. False when that was refused: then the page is to stay in sight,
    /// with the reason.
    bool leave();
    /// Chooses the row of this record and gives it the keyboard. False when the page lists no such
    /// row.
    virtual bool showRecord(const base::Uuid&) { return false; }

    /// For what lasts, and whose end its owner knows.
    ErrorBanner& banner() { return *m_banner; }
    /// What came of what the user did last, for as long as that is news: the next answer ends it,
    /// as does the next operation.
    void refuse(const QString& reason);
    void tell(const QString& message);
    /// The same with a button that does something about it.
    ErrorBanner::MessageId offer(const QString& message, const QString& action,
                                 std::function<void()> perform);
    void endAnswer() { m_banner->end(m_answer); }
    /// Carries out what the user asked for. The answer says why it was refused, or what came of it.
    /// True when it was done.
    template <typename Operation>
    bool perform(Operation&& operation) {
        endAnswer();
        const auto refused = refusal(operation);
        if (refused) {
            refuse(*refused);
        }
        return !refused;
    }

Q_SIGNALS:
    /// The change of the window that this step of its undo stands for is to be taken back.
    void undoRequested(std::uint64_t step);

protected:
    Page(const Theme& theme, QWidget* parent);

    /// Stores what is being edited. False when that was refused; then the page says why.
    virtual bool leaveEditing() { return true; }
    /// Call once, with widgets that have no parent yet: so the keyboard goes through them in this
    /// order. The content takes the room that is left below `top`, in all its width: what of it
    /// stands in the column is its own affair.
    void layOut(std::initializer_list<QWidget*> top, QAbstractScrollArea& content);
    /// Puts the bar directly above the content, also for the keyboard.
    void insertBar(QWidget& bar);
    /// Says over the content why there is nothing in it, and what would change that; an empty text
    /// says nothing.
    void setHint(const QString& text, const QString& next = {});
    /// Takes in what the store says, which nobody asked for. What is refused is told until it is
    /// done. True when it was done.
    template <typename Operation>
    bool follow(Operation&& operation) {
        const auto refused = refusal(operation);
        if (refused) {
            m_trouble = m_banner->say({.text = *refused}, m_trouble);
        } else {
            m_banner->end(m_trouble);
        }
        return !refused;
    }

private:
    const Theme& m_theme;
    /// What stands above the content.
    ColumnLayout* m_top;
    ErrorBanner* m_banner;
    PageHint* m_hint;
    QWidget* m_content = nullptr;
    ErrorBanner::MessageId m_answer = 0;
    ErrorBanner::MessageId m_trouble = 0;
};

} // namespace korvex::ui
