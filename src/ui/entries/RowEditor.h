#pragma once

#include "ui/kit/Theme.h"

#include <QFrame>

class QMenu;
class QTextEdit;

namespace korvex::ui {

class RowRefusal;

/// What stands in the place of a row while the row is edited; under it, where something was
/// refused, the reason and the offer to give up what was typed. Main thread.
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
    /// Whether the text differs from the one that was given last.
    virtual bool isChanged() const = 0;
    /// Whether there is nothing but white space.
    bool isBlank();
    /// Gives up what was typed.
    virtual void revert() = 0;
    /// A menu with the commands on the text itself; the caller owns it.
    virtual QMenu* makeMenu() = 0;
    /// The height that the row needs at this width.
    virtual int neededHeight(int width) = 0;

    void showError(const QString& message);
    void clearError();
    /// Whether the widget is the editor or a part of it.
    bool owns(const QWidget* widget) const;

Q_SIGNALS:
    void neededHeightChanged();
    /// This part of the editor is to be in sight.
    void revealRequested(const QRect& part);
    /// What was typed is given up.
    void discarded();

protected:
    const Theme& theme() const { return m_theme; }
    bool event(QEvent* event) override;
    /// A press beside the field is none on the row behind: it changes nothing.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Draws the ground and the frame that mark the row as the one that is edited.
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    RowRefusal* m_refusal;
    bool m_hasError = false;
};

} // namespace korvex::ui
