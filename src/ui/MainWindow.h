#pragma once

#include "ui/Workspace.h"

#include <QWidget>

class QSplitter;
class QStackedWidget;

namespace korvex::ui {

class ArchivedBoardsPage;
class BoardActions;
class BoardPage;
class Sidebar;
class Theme;

/// The main window: the boards at the left, the chosen one's content at the right. Main thread.
class MainWindow final : public QWidget {
    Q_OBJECT

public:
    MainWindow(const Workspace& workspace, const Theme& theme);
    ~MainWindow() override;

    /// Shows what the user should know, over the board.
    void showNotices(const std::vector<std::string>& notices);
    void showError(const QString& message);
    void comeForward();

Q_SIGNALS:
    /// The board's content has been drawn for the first time: now there is time for the rest.
    void firstPainted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addShortcuts();
    void restoreLayout();
    void saveLayout();
    model::Board* launchBoard();
    void showBoard(model::Board& board);
    void showArchived();
    void storeChanged();
    void startText();
    void openBoardMenu(model::Board& board, const QPoint& globalPosition);
    void openPageMenu(const QPoint& globalPosition);

    const Workspace& m_workspace;
    const Theme& m_theme;
    QSplitter* m_splitter;
    Sidebar* m_sidebar;
    QStackedWidget* m_pages;
    BoardPage* m_page;
    ArchivedBoardsPage* m_archivedPage = nullptr;
    BoardActions* m_actions;
    base::Subscription m_changes;
    bool m_wasPainted = false;
};

} // namespace korvex::ui
