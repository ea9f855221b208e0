#pragma once

#include "ui/kit/theme/Theme.h"

#include <QFrame>
#include <QPointer>

#include <optional>

namespace korvex::ui {

/// A small panel over the window that belongs to a place in it, and never reaches beyond the
/// window. Escape does as a press outside: it keeps what was changed and closes; where that is
/// refused, a second Escape gives the change up. Then the keyboard goes back to where it was. When
/// the look of the windows changes, it does as for a press outside. One that is opened from another
/// belongs to it and closes with it. Deletes itself once closed.
class Popover : public QFrame {
    Q_OBJECT

public:
    Popover(const Theme& theme, QWidget* window);

    /// Opens below `anchor`, in global coordinates, or above or beside it where there is no room
    /// below; or goes there, where it is open.
    void openAt(const QRect& anchor);
    /// Opens in the middle of the window.
    void openInMiddle();
    /// What opens and closes the panel: a press there is no press outside.
    void setOpener(const QWidget& opener) { m_opener = &opener; }
    /// The most that the panel can take.
    QSize room() const;
    /// What a press outside asks for; closes unless a subclass has something to lose.
    virtual void dismiss() { closeNow(); }
    void closeNow();
    /// Dismisses it, and gives up what cannot be kept: what it is about has gone out of sight.
    void end();
    /// Dismisses all that are open over this window, and closes its menus. False when one has
    /// something to lose.
    static bool dismissAll(const QWidget& window);
    static void endAll(const QWidget& window);
    /// Whether the widget is a popover or a part of one.
    static bool holds(const QWidget* widget) { return panelOf(widget) != nullptr; }

Q_SIGNALS:
    /// What was opened from it closes with it.
    void closing();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    /// Tab stays inside the panel.
    bool focusNextPrevChild(bool next) override;
    /// To be called when what could be lost is another: Escape is to be tried anew.
    void changed() { m_isRefused = false; }
    /// To be called when it says why it cannot be closed as it is: Escape gives that up, and does
    /// not only say it once more.
    void refused() { m_isRefused = true; }
    /// Whether it said so by itself, and nothing was changed since.
    virtual bool saysWhyNot() const { return false; }
    /// To be called when the content has another size, where that is to be seen at once.
    void placeAgain();
    /// In pixels; in a window that is narrower the panel is as wide as that allows.
    void setPanelWidth(int width) { m_panelWidth = width; }
    const Theme& theme() const { return m_theme; }

private:
    void open();
    /// Below the anchor, else above it, else beside it; over it where there is no room anywhere.
    QPoint placeBy(const QRect& anchor) const;
    /// The popover that the widget is, or is a part of; null for none.
    static const Popover* panelOf(const QWidget* widget);
    /// Whether a press there is one into this panel, or into one that was opened from it.
    bool owns(const QWidget* pressed) const;

    const Theme& m_theme;
    QPointer<QWidget> m_focusBefore;
    QPointer<const QWidget> m_opener;
    /// In the window's coordinates; none for its middle.
    std::optional<QRect> m_anchor;
    /// 0 for that of the content.
    int m_panelWidth = 0;
    /// What was just to be kept could not be, and the user was told: Escape gives it up.
    bool m_isRefused = false;
};

} // namespace korvex::ui
