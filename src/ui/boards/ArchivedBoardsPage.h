#pragma once

#include "model/Board.h"
#include "ui/kit/Theme.h"
#include "ui/workspace/Workspace.h"

#include <QWidget>

#include <vector>

class QBoxLayout;
class QLabel;
class QScrollArea;

namespace korvex::ui {

class ErrorBanner;
class SidebarRow;

/// Lists the archived boards: each opens to be looked at, and has buttons that bring it back and
/// that delete it.
class ArchivedBoardsPage final : public QWidget {
    Q_OBJECT

public:
    ArchivedBoardsPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);

    void showBoards(const std::vector<model::Board*>& boards);
    void focusList();
    void showMessage(const QString& message);

Q_SIGNALS:
    void openRequested(korvex::model::Board* board);
    void unarchiveRequested(korvex::model::Board* board);
    void deletionRequested(korvex::model::Board* board, const QRect& globalAnchor);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    /// What a row shows; while none differs nothing is made anew, so that the keyboard stays.
    struct Row {
        base::Uuid id;
        std::string name;
        QString icon;
        QColor color;
        std::size_t entries = 0;

        bool operator==(const Row&) const = default;
    };

    Row rowOf(const model::Board& board) const;
    void rebuild();
    void addRow(QWidget& rows, const Row& row, int number);
    /// In a narrow window the buttons stand under the names.
    void arrange();
    void walk(int number, int direction);
    template <typename Signal>
    void with(const base::Uuid& id, Signal&& signal);

    const Workspace& m_workspace;
    const Theme& m_theme;
    QLabel* m_title;
    ErrorBanner* m_banner;
    QLabel* m_nothing;
    QScrollArea* m_area;
    std::vector<Row> m_rows;
    std::vector<SidebarRow*> m_buttons;
    std::vector<QBoxLayout*> m_lines;
};

} // namespace korvex::ui
