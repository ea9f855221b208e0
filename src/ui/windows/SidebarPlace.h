#pragma once

#include <QObject>

class QSplitter;
class QWidget;

namespace korvex::ui {

class Sidebar;
class Theme;

/// Where the sidebar is: beside the page, or away, as the user wants it. A window that is too
/// narrow for both folds it away; then it comes over the page for as long as it has the keyboard.
/// Main thread.
class SidebarPlace final : public QObject {
    Q_OBJECT

public:
    /// The sidebar is the first part of the splitter, which fills the window.
    SidebarPlace(QWidget& window, QSplitter& splitter, Sidebar& sidebar, const Theme& theme);

    bool isShown() const;
    /// Over the page, for the moment.
    bool isOver() const { return m_isNarrow && isShown(); }
    void show();
    void toggle();
    /// Away, if it lies over the page.
    void leavePage();
    /// While the page shows what is searched for, only the field lies over it.
    void setSearching(bool searching);

    /// Beside the page, in pixels, as the user has it: however narrow the window is meanwhile.
    int width() const { return m_width; }
    void setWidth(int width);
    /// Whether it is to be beside the page where there is room.
    bool isWanted() const { return m_isWanted; }
    void setWanted(bool wanted);

Q_SIGNALS:
    /// It has gone, and the keyboard is the page's.
    void left();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void arrange();
    void divide();
    void fold();
    void unfold();
    void placeOver();
    /// Away, wherever the keyboard is.
    void putAway();
    /// The keyboard went to something that is not of the sidebar.
    void focusMoved(const QWidget* now);

    QWidget& m_window;
    QSplitter& m_splitter;
    Sidebar& m_sidebar;
    int m_width;
    bool m_isWanted = true;
    bool m_isNarrow = false;
    bool m_isSearching = false;
};

} // namespace korvex::ui
