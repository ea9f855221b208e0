#pragma once

#include "ui/AttachmentChips.h"
#include "ui/EntryListModel.h"
#include "ui/TextRow.h"
#include "ui/Theme.h"

#include <QRect>
#include <QTextLayout>

#include <memory>

namespace korvex::ui {

/// How a todo's text and its due label share the row: side by side while the text needs one line
/// only.
struct TextArrangement {
    bool isBeside = true;
    int textWidth = 0;
    int textHeight = 0;
};
/// A text as a row shows it, in its own direction; still without lines.
std::unique_ptr<QTextLayout> makeTextLayout(QString text, const Theme& theme);
/// Lays the text out. `room` is what both have; `besideWidth` what stands beside the text takes of
/// it. Without a due label what stands beside stays there.
TextArrangement arrangeText(QTextLayout& text, int room, int besideWidth, bool hasDue);

/// The texts of a todo's schedule, as a row shows them.
struct DueLabel {
    QString text;
    bool isOverdue = false;
    bool hasReminder = false;

    bool isEmpty() const { return text.isEmpty() && !hasReminder; }
    /// In pixels, with the bell.
    int width(const Theme& theme) const;
    /// In as many lines as it takes in this room.
    int height(int room, const Theme& theme) const;
    /// With the distance from the text.
    int bellWidth(const Theme& theme) const { return hasReminder ? theme.scaled(13) + 5 : 0; }
};
/// Whether the label says "Overdue", or something above it has said so.
enum class OverdueWord { no, yes };
DueLabel dueLabelOf(const model::Entry& entry, const Workspace& workspace,
                    OverdueWord word = OverdueWord::yes);

/// What one row shows, laid out for one width. All rectangles count from the row's top left corner.
class EntryRowLayout {
public:
    EntryRowLayout(const EntryListModel& model, int row, int width, const Workspace& workspace,
                   const Theme& theme, const TextLook& look);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// The ground of the row, which shows hover and selection; the rest is the distance to its
    /// neighbours.
    QRect box() const { return m_box; }
    /// The circle, or the sign in its place.
    QRect sign() const { return m_sign; }
    QRect text() const { return m_textRect; }
    /// Due label and bell; empty when the todo has neither.
    QRect due() const { return m_due; }
    /// Where a todo without a due label gets one, while the pointer is over it or it is current.
    QRect scheduleButton() const { return m_scheduleButton; }

    /// Of a text entry; null for all other rows.
    TextRow* formatted() const { return m_formatted.get(); }
    /// Of all other rows.
    const QTextLayout& textLayout() const { return *m_text; }
    const DueLabel& dueLabel() const { return m_dueLabel; }
    /// The attachments under the text; null where there are none.
    const AttachmentChips* chips() const { return m_chips.get(); }
    QPoint chipsTopLeft() const { return m_chipsTopLeft; }
    /// What the chips add below an editor that stands in the row's place.
    int chipsExtent() const;

    /// About how many times the memory of a one-line todo it takes; at least 1.
    int cost() const { return m_formatted ? m_formatted->cost() : 1; }

    /// The UTF-16 offset in the text under a point.
    int cursorAt(const QPoint& point) const;
    /// The link under a point, if it may be opened; else empty.
    QString linkAt(const QPoint& point) const;

    /// What all rows have in common, for the editor that takes a row's place.
    struct Frame {
        int boxMargin;
        int padding;
        int signSize;
        int textLeft;
        int textRight;
        int scheduleSize;
        int gap;
    };
    static Frame frame(const Theme& theme);

private:
    /// Both return where the text ends.
    int layOutFormatted(const model::Entry& entry, const Workspace& workspace, const Theme& theme,
                        const TextLook& look);
    int layOutPlain(const EntryListModel& model, int row, const Workspace& workspace,
                    const Theme& theme);
    void placeChips(const services::AttachmentList& list, int bottom, const Theme& theme);
    void setBox(int bottom, const Theme& theme);

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
    DueLabel m_dueLabel;
};

/// Guesses heights from the length of the texts and, of text entries, from their lines, in some
/// nanoseconds a row. Decodes nothing.
class EntryHeightEstimate {
public:
    EntryHeightEstimate(int width, const Theme& theme);

    int width() const { return m_width; }
    int height(const EntryListModel& model, int row) const;

private:
    int textHeight(const std::string& content) const;

    int m_width;
    int m_room;
    int m_textRoom;
    int m_lineHeight;
    int m_characterWidth;
    int m_lowest;
    int m_around;
};

} // namespace korvex::ui
