#pragma once

#include "services/AttachmentList.h"
#include "ui/kit/theme/Theme.h"

#include <QPainter>
#include <QRect>
#include <QString>

#include <optional>
#include <vector>

namespace korvex::ui {

/// A file's name as it is shown: without line breaks, and without the invisible characters that
/// would let "exe.jpg" pass for another kind of file.
QString shownFilename(const std::string& filename);

/// "2 attachments: a.pdf, b.png"; empty for none.
QString accessibleTextOf(const services::AttachmentList& list);

/// What is special about some of the chips of a row.
struct AttachmentMarks {
    std::optional<base::Uuid> selected;
    std::optional<base::Uuid> hovered;
    /// Whether the list has the keyboard.
    bool isActive = false;

    bool operator==(const AttachmentMarks&) const = default;
};

/// The attachments of an entry as small labels under its text, laid out for one width. All points
/// count from the top left corner of the first.
class AttachmentChips {
public:
    AttachmentChips(const services::AttachmentList& list, int width, const Theme& theme);

    /// Above the chips, from the text.
    static int distance(const Theme& theme) { return theme.space(Space::small); }

    /// That they were laid out for.
    int width() const { return m_width; }
    int height() const { return m_height; }
    int count() const { return static_cast<int>(m_chips.size()); }
    QRect rect(int index) const { return m_chips[static_cast<std::size_t>(index)].rect; }
    /// Absent for the chip that stands for a list that cannot be read.
    std::optional<base::Uuid> idOf(int index) const;
    int indexOf(const base::Uuid& id) const;
    /// -1 for none.
    int chipAt(const QPoint& point) const;

    void paint(QPainter& painter, const Theme& theme, const AttachmentMarks& marks) const;
    void paintChip(QPainter& painter, const Theme& theme, int index,
                   const AttachmentMarks& marks) const;

private:
    struct Chip {
        std::optional<base::Uuid> id;
        QString icon;
        /// As much of the name as there is room for.
        QString name;
        QString size;
        QRect rect;
    };

    void place(int width, const Theme& theme);

    std::vector<Chip> m_chips;
    int m_width;
    int m_height = 0;
};

} // namespace korvex::ui
