#pragma once

#include "app/WidgetFile.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "base/TextFolding.h"
#include "base/Uuid.h"
#include "ui/kit/theme/Theme.h"
#include "ui/widget/WidgetDesktop.h"
#include "ui/widget/WidgetStore.h"
#include "ui/workspace/DateTexts.h"

#include <QWidget>

#include <memory>
#include <optional>
#include <string>

class QMenu;

namespace korvex::ui {

class PageHint;
class WidgetHeader;
class WidgetPage;

/// What widgets work with; all of it outlives them.
struct WidgetSurroundings {
    WidgetStore& store;
    const Theme& theme;
    DateTexts& dates;
    const base::TextFolding& folding;
    base::RunLoop& runLoop;
    WidgetDesktop& desktop;
};

/// A small window on the desktop with one board's open todos. It stays when the store goes, and
/// says so. Main thread.
class WidgetWindow final : public QWidget {
    Q_OBJECT

public:
    WidgetWindow(const app::RememberedWidget& remembered, const WidgetSurroundings& surroundings);
    ~WidgetWindow() override;

    /// Where it stood, or else at this place, as far as the screens have it.
    void showAt(const QRect& otherwise);
    /// Whether the user sees it, or would if nothing lay over it.
    bool isShown() const { return isVisible() && !isMinimized(); }
    /// The user has asked for it, who has perhaps no pointer: it takes the keyboard, and does
    /// not stand below other windows for as long as it has it.
    void bringForward();
    /// Says why the user does not get what was asked for.
    void refuse(const QString& reason);
    /// What is to be remembered of it.
    const app::RememberedWidget& remembered() const { return m_remembered; }
    /// Takes the place where it stands now for the one that it was put in: nobody waits any longer
    /// for whether it is moved on.
    void settle();
    /// Whether it is this board's, by whatever name it is remembered.
    bool isOf(const base::Uuid& board) const;
    /// The size of one that nobody has resized.
    static QSize firstSize(const Theme& theme);
    /// To be called when the screens are others: what would be out of reach comes back into sight,
    /// and goes where it was once that is there again.
    void followScreens();

Q_SIGNALS:
    /// Once: the window system has the first picture.
    void firstPainted();
    /// Something is to be remembered.
    void placed();
    void addRequested();
    void removeRequested();
    void closeAllRequested();
    /// It was closed, and is to be shown again by the next start.
    void closed();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void followStore();
    void makePage();
    void dropPage();
    void showBoard();
    void openBoard();
    void openEntry(const base::Uuid& entry);
    void openLink(const std::string& url);
    void endAnswer();
    void chooseBoard();
    void setBoard(const base::Uuid& board);
    QMenu* makeMenu();
    void addPlacing(QMenu& menu);
    void addPlacingByKeys(QMenu& menu);
    void popUp(const QPoint& globalPosition);
    enum class Below { no, yes };
    /// For now; what is remembered stays.
    void standBelow(Below below);
    /// The user has gone to it by keys.
    void beCalled();
    void followKeyboard();
    void setBelow(bool isBelow);
    void startMoving(const QPoint& globalPosition);
    Qt::Edges edgesAt(const QPoint& position) const;
    void rememberPlace();
    void applyTheme();

    app::RememberedWidget m_remembered;
    WidgetSurroundings m_surroundings;
    WidgetHeader* m_header;
    PageHint* m_hint;
    /// Null while the store is not open.
    WidgetPage* m_page = nullptr;
    /// From the window's corner to the pointer that moves it, where the desktop does not.
    std::optional<QPoint> m_moving;
    /// Where it was put by the program, not by the user.
    QRect m_fitted;
    bool m_wasShown = false;
    /// The user has asked for it, and has not gone elsewhere with the keyboard since.
    bool m_isCalled = false;
    /// The window manager has the keyboard for that, or was asked to take it.
    bool m_isPlacedByKeys = false;
    std::unique_ptr<base::RunLoop::Timer> m_losing;
    bool m_isPainted = false;
    base::Subscription m_storeChanges;
    base::Subscription m_storeEnds;
    std::unique_ptr<base::RunLoop::Timer> m_saving;
    /// It was moved since its place was remembered.
    bool m_isMoved = false;
};

} // namespace korvex::ui
