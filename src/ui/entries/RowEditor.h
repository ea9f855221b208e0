#pragma once

#include "richtext/text/AttributedString.h"
#include "ui/entries/EntryRowRoom.h"
#include "ui/kit/overlays/ErrorBanner.h"

#include <algorithm>
#include <functional>
#include <optional>

class QMenu;
class QTextCursor;
class QTextEdit;

namespace korvex::ui {

class RowRefusal;

/// What stands in the place of a row while the row is edited; at its foot, where something was
/// refused, the reason and the offer to give up what was typed. The message has room of its own, by
/// which the editor grows downwards, and stays in sight where the foot is not. Main thread.
class RowEditor : public QFrame {
    Q_OBJECT

public:
    RowEditor(const Theme& theme, QWidget* parent);

    /// The field that has the keyboard.
    virtual QTextEdit& input() = 0;
    /// The UTF-16 offset of the caret in the text.
    virtual int caret() const = 0;
    /// Puts the caret at a UTF-16 offset; -1, or one beyond the text, is the end.
    virtual void setCaret(int offset) = 0;
    virtual richtext::AttributedString text() const = 0;
    /// Shows a text that is stored, with nothing to undo.
    virtual void load(const richtext::AttributedString& stored) = 0;
    /// Makes the text another, as one step of undo that touches no more of it than differs: the
    /// caret and what is typed around it stay. Where a table's edge stands in the way the document
    /// is made anew, with nothing to undo.
    virtual void change(const richtext::AttributedString& to) = 0;
    /// What the store has of the text, as far as this editor was told.
    const richtext::AttributedString& stored() const { return m_stored; }
    /// The store has this by now; what was typed stays.
    void setStored(const richtext::AttributedString& stored) { m_stored = stored; }
    /// The text before this editing, with what others have written into it since: what giving up
    /// leaves.
    const richtext::AttributedString& opened() const { return m_opened; }
    void setOpened(const richtext::AttributedString& opened) { m_opened = opened; }
    /// Whether anything was typed since the entry was opened, stored by now or not.
    bool isTypedInto() const { return !text().isEquivalentTo(m_opened); }
    /// Whether the text differs from the stored one.
    virtual bool isChanged() const = 0;
    /// Nothing of the text can be undone here from now on.
    void forgetSteps();
    /// Whether there is nothing but white space.
    bool isBlank();
    /// Gives up what was not stored.
    void revert() { load(m_stored); }
    /// A menu with the commands on the text itself; the caller owns it.
    virtual QMenu* makeMenu() = 0;
    /// The height that the row needs in this room.
    int neededHeight(const EntryRowRoom& room) {
        const auto text = textHeight(room);
        return text + messageHeight(widthIn(room));
    }
    /// The width that the row takes in this room, with the text as `neededHeight` laid it out last.
    int widthIn(const EntryRowRoom& room) const {
        return std::clamp(wholeWidth(), room.width, room.most);
    }

    /// What ends a message at the foot.
    enum class Until {
        /// The next change of the text.
        edited,
        /// `endMessage`: the text is stored, or is another's.
        stored,
    };
    void showError(const QString& message, Until until = Until::edited);
    /// What the user should know, and nothing is wrong with.
    void showNotice(const QString& message);
    void endMessage();
    /// Whether a message is shown that this ends.
    bool says(Until until) const { return m_until == until; }
    /// Whether it says that the text could not be stored.
    bool isRefused() const { return says(Until::stored) && m_tone == ErrorBanner::Tone::error; }
    /// Whether the widget is the editor or a part of it.
    virtual bool owns(const QWidget* widget) const {
        return widget == this || isAncestorOf(widget);
    }
    /// Places what stays in sight of an editor that is higher than the list. To be called when
    /// either has another place or size.
    virtual void placeInSight();
    /// So many pixels at the foot of the list are out of sight under something else, from the next
    /// `placeInSight` on.
    void coverFoot(int height) { m_coveredFoot = height; }
    bool isCaretInSight();
    /// Asks for the caret to be in sight, and of a message that it is not over it.
    void reveal();

Q_SIGNALS:
    void neededHeightChanged();
    /// This part of the editor is to be in sight.
    void revealRequested(const QRect& part);
    /// What was typed is given up.
    void discarded();

protected:
    const Theme& theme() const { return m_theme; }
    /// The height that the editor needs without a message. Lays the text out.
    virtual int textHeight(const EntryRowRoom& room) = 0;
    /// The width of a row in which all of the text is seen, as it was laid out last; 0 where that
    /// is never more than there is.
    virtual int wholeWidth() const { return 0; }
    /// What a message takes of the height.
    int messageHeight(int width) const;
    /// The place of the caret, with all around it that is to be seen while one types.
    virtual QRect caretPlace() = 0;
    /// The text has changed.
    void edited();
    /// Lets `edit` change the document as one step of undo. The caret stays before what is put in
    /// at its place.
    void editAround(const std::function<void(QTextCursor&)>& edit);
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// A press beside the field is none on the row behind: it changes nothing.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Draws the ground and the frame that mark the row as the one that is edited.
    void paintEvent(QPaintEvent* event) override;

    /// Where the list ends for who looks at it, as this sees it.
    int endOfSight() const;

private:
    void say(const QString& message, ErrorBanner::Tone tone, Until until);
    /// Offers to give up what was typed where there is anything. True when that has changed.
    bool offerDiscard();

    const Theme& m_theme;
    richtext::AttributedString m_stored;
    richtext::AttributedString m_opened;
    RowRefusal* m_message;
    ErrorBanner::Tone m_tone = ErrorBanner::Tone::error;
    /// Absent while there is no message.
    std::optional<Until> m_until;
    /// Whether anything could be undone when the message was shown last.
    bool m_couldUndo = false;
    int m_coveredFoot = 0;
};

} // namespace korvex::ui
