#pragma once

#include "ui/attachments/AttachmentChips.h"
#include "ui/entries/EntryListModel.h"
#include "ui/kit/theme/Theme.h"
#include "ui/text/TextRow.h"
#include "ui/todos/DueLabel.h"
#include "ui/todos/RowFrame.h"

#include <QRect>
#include <QTextLayout>

#include <memory>

namespace korvex::ui {

/// What one row shows, laid out for one width. All rectangles count from the row's top left corner.
class EntryRowLayout {
public:
    /// `former` is the layout of the same for another width, or null: a text is read and formatted
    /// once, however often the window changes its width.
    EntryRowLayout(const EntryListModel& model, int row, int width, const Theme& theme,
                   const TextLook& look, std::unique_ptr<EntryRowLayout> former = nullptr);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// Lets wide tables reach up to this width of the row, where it is more than its own.
    void reachTo(int most) const;
    /// How wide the row would have to be for all of it to be seen.
    int wholeWidth() const;
    /// The ground of the row, which shows hover and selection; the rest is the distance to its
    /// neighbours.
    QRect box() const;
    /// The circle, or the sign in its place.
    QRect sign() const { return m_sign; }
    QRect text() const { return m_textRect; }
    /// Due label and bell; empty when the todo has neither.
    QRect due() const { return m_due; }
    /// Where a todo without a due label gets one, while the pointer is over it or it is current.
    QRect scheduleButton() const { return m_scheduleButton; }

    /// The text of a text entry; null for all other rows.
    TextRow* formatted() const { return m_formatted.get(); }
    /// The text of all other rows.
    const QTextLayout& textLayout() const { return *m_text; }
    const DueLabel& dueLabel() const { return m_dueLabel; }
    /// The attachments under the text; null where there are none.
    const AttachmentChips* chips() const { return m_chips.get(); }
    QPoint chipsTopLeft() const { return m_chipsTopLeft; }
    /// What the chips add below an editor that stands in the row's place.
    int chipsExtent() const { return m_chipsExtent; }

    /// About how many times the memory of a one-line todo it takes; at least 1.
    int cost() const { return m_formatted ? m_formatted->cost() : 1; }

    /// The UTF-16 offset in the text under a point.
    int cursorAt(const QPoint& point) const;
    /// The link under a point, if it may be opened; else empty.
    QString linkAt(const QPoint& point) const;

private:
    /// Both return where the text ends.
    int layOutFormatted(const EntryListModel& model, int row, const Theme& theme,
                        const TextLook& look, EntryRowLayout* former);
    int layOutPlain(const EntryListModel& model, int row, const Theme& theme);
    void placeChips(const services::AttachmentList& list, int bottom, const Theme& theme);
    void setBox(int bottom, const RowFrame& frame);

    int m_width;
    int m_height = 0;
    QRect m_box;
    QRect m_sign;
    QRect m_textRect;
    QRect m_due;
    QRect m_scheduleButton;
    std::unique_ptr<QTextLayout> m_text;
    std::unique_ptr<TextRow> m_formatted;
    std::unique_ptr<AttachmentChips> m_chips;
    QPoint m_chipsTopLeft;
    int m_chipsExtent = 0;
    /// What is free at each side of a text.
    int m_side = 0;
    DueLabel m_dueLabel;
};

/// Guesses heights from the length of the texts and, of text entries, from their lines, in some
/// nanoseconds a row. Decodes nothing.
class EntryHeightEstimate {
public:
    EntryHeightEstimate(int width, const Theme& theme, const TextLook& look);

    int width() const { return m_width; }
    int height(const EntryListModel& model, int row) const;

private:
    int textHeight(const std::string& content) const;

    int m_width;
    int m_room;
    int m_textRoom;
    int m_lineHeight;
    int m_textLineHeight;
    int m_characterWidth;
    int m_lowest;
    int m_around;
    int m_textAround;
};

} // namespace korvex::ui
