#pragma once

#include "ui/BoardListView.h"
#include "ui/Workspace.h"

#include <QWidget>

class QLabel;
class QToolButton;

namespace korvex::ui {

class ErrorBanner;

/// The boards at the window's left, and the way to the archived ones. Carries out what the user
/// asks of the list of boards.
class Sidebar final : public QWidget {
    Q_OBJECT

public:
    Sidebar(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);

    BoardListModel& boards() { return m_model; }
    BoardListView& list() { return *m_list; }
    /// The store's records have changed.
    void refresh();
    /// Counts the open todos of all boards, soon.
    void countSoon();

    /// Makes a board and lets its name be typed.
    void createBoard();
    void rename(model::Board& board);
    void showMessage(const QString& message);

    static constexpr int kMinimumWidth = 180;
    static constexpr int kMaximumWidth = 360;

Q_SIGNALS:
    void boardChosen(korvex::model::Board* board);
    void boardMenuRequested(korvex::model::Board* board, const QPoint& globalPosition);
    void archivedRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void store(model::Board& board, const QString& name);
    void move(const base::Uuid& id, const base::Uuid& target, model::EntryPlacement placement);
    void applyTheme();
    void elideArchived();

    const Workspace& m_workspace;
    const Theme& m_theme;
    BoardListModel m_model;
    QLabel* m_title;
    QToolButton* m_add;
    BoardListView* m_list;
    ErrorBanner* m_banner;
    QToolButton* m_archived;
    bool m_isCountDue = false;
};

} // namespace korvex::ui
