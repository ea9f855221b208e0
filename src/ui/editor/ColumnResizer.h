#pragma once

#include "richtext/text/Attributes.h"

#include <QObject>
#include <QPointer>
#include <QRect>

#include <optional>

class QTextTable;
class QWidget;

namespace korvex::ui {

class RichTextEdit;

/// Lets the pointer drag the borders between the columns of an editor's tables. A line follows the
/// pointer; the column takes its width when the button is released, as one step of undo. Escape
/// gives up, a double click brings the default width back. Tables inside others keep their widths.
/// Main thread; the editor must outlive it.
class ColumnResizer final : public QObject {
    Q_OBJECT

public:
    explicit ColumnResizer(RichTextEdit& edit, QObject* parent = nullptr);
    ~ColumnResizer() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// The border at the right of a column.
    struct Border {
        QPointer<QTextTable> table;
        int column = 0;
        /// The place is the viewport's.
        int x = 0;
        QRect tableRect;
        /// The content of the column has this width in pixels.
        double width = 0;
    };

    std::optional<Border> borderAt(const QPoint& position) const;
    bool handlePointer(QEvent& event);
    void begin(const Border& border);
    void follow(int x);
    void apply();
    void cancel();
    /// The pointer shows it.
    void setIsOverBorder(bool isOverBorder);
    /// The width that the column's content would get here, within the limits.
    richtext::Twips widthFor(int x) const;

    RichTextEdit& m_edit;
    /// It is kept beside the editor since the last events come when that is no editor any more.
    QWidget* m_viewport;
    std::optional<Border> m_dragged;
    int m_pressedX = 0;
    int m_currentX = 0;
    bool m_isOverBorder = false;
    QPointer<QWidget> m_guide;
};

} // namespace korvex::ui
