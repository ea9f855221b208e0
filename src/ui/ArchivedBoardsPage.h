#pragma once

#include "model/Board.h"
#include "ui/Theme.h"

#include <QWidget>

#include <vector>

class QLabel;
class QVBoxLayout;

namespace korvex::ui {

/// Lists the archived boards, each with a button that brings it back.
class ArchivedBoardsPage final : public QWidget {
    Q_OBJECT

public:
    explicit ArchivedBoardsPage(const Theme& theme, QWidget* parent = nullptr);

    void showBoards(const std::vector<model::Board*>& boards);

Q_SIGNALS:
    void unarchiveRequested(korvex::model::Board* board);
    void deletionRequested(korvex::model::Board* board, const QRect& globalAnchor);

private:
    void addRow(model::Board& board);

    const Theme& m_theme;
    QLabel* m_title;
    QWidget* m_rows = nullptr;
    QVBoxLayout* m_column;
};

} // namespace korvex::ui
