#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

#include <optional>

namespace korvex::ui {

/// Marks the row that what is dragged would go to, and the place among its attachments. Lies over
/// rows and editors and is in nobody's way.
class AttachmentDropMark final : public QWidget {
public:
    AttachmentDropMark(const Theme& theme, QWidget* viewport);

    /// Marks the row, or the place in it, a line between two chips; in the coordinates of the
    /// viewport.
    void mark(const QRect& row, const std::optional<QRect>& place);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    std::optional<QRect> m_place;
};

} // namespace korvex::ui
