#pragma once

#include "services/BoardService.h"
#include "store/ModelContext.h"
#include "ui/kit/pages/Page.h"

#include <vector>

class QBoxLayout;
class QScrollArea;

namespace korvex::ui {

class PageHeader;
class SidebarRow;

/// Lists the archived boards: each opens to be looked at, and has buttons that bring it back and
/// that delete it.
class ArchivedBoardsPage final : public Page {
    Q_OBJECT

public:
    ArchivedBoardsPage(const services::BoardService& boards, store::ModelContext& context,
                       const Theme& theme, QWidget* parent = nullptr);

    QString title() const override;
    void takeKeyboard() override;
    void storeChanged() override;

Q_SIGNALS:
    void openRequested(korvex::model::Board* board);
    void unarchiveRequested(korvex::model::Board* board);
    void deletionRequested(korvex::model::Board* board);

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

    std::vector<Row> rows() const;
    void rebuild();
    void addRow(QWidget& rows, const Row& row, int number);
    /// In a narrow window the buttons stand under the names.
    void arrange();
    /// The row gets the keyboard, where there is one of that number.
    void walkTo(int number);
    template <typename Signal>
    void with(const base::Uuid& id, Signal&& signal);

    const services::BoardService& m_boards;
    store::ModelContext& m_context;
    const Theme& m_theme;
    PageHeader* m_header;
    QScrollArea* m_area;
    std::vector<Row> m_rows;
    std::vector<SidebarRow*> m_buttons;
    std::vector<QBoxLayout*> m_lines;
};

} // namespace korvex::ui
