#include "ui/settings/BoardChoice.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QAbstractItemView>
#include <QSignalBlocker>

#include <algorithm>
#include <utility>

namespace korvex::ui {

BoardChoice::BoardChoice(const services::BoardService& boards, Fallback fallback,
                         const Theme& theme)
    : m_boards(boards), m_fallback(std::move(fallback)), m_theme(theme) {
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(this, &QComboBox::activated, this, [this](int row) {
        if (const auto id = base::Uuid::parse(toUtf8(itemData(row).toString()))) {
            Q_EMIT chosen(*id);
        } else {
            Q_EMIT fallbackChosen();
        }
    });
}

std::vector<BoardChoice::Row>
BoardChoice::wantedRows(const app::AppPreferences::BoardID& chosen) const {
    const auto active = services::BoardService::activeBoards(m_boards.boards());
    std::vector<Row> rows;
    const auto isThere = std::any_of(active.begin(), active.end(),
                                     [&](const auto* board) { return board->id() == chosen; });
    if (!isThere || m_fallback.offered == Offered::always) {
        rows.push_back({.name = chosen && !isThere ? m_fallback.gone : m_fallback.unset});
    }
    for (const auto* const board : active) {
        rows.push_back({.icon = boardIconName(board->iconSystemName()),
                        .color = iconColorOf(*board, m_theme.colors()),
                        .name = toQString(board->name()),
                        .id = toQString(board->id().text())});
    }
    return rows;
}

void BoardChoice::show(const app::AppPreferences::BoardID& chosen) {
    if (view()->isVisible()) {
        return; // nobody's hand is moved
    }
    const QSignalBlocker quiet(this);
    if (auto rows = wantedRows(chosen); rows != m_rows) {
        m_rows = std::move(rows);
        clear();
        for (const auto& row : m_rows) {
            addItem(row.id.isEmpty() ? QIcon() : IconSet::icon(row.icon, row.color), row.name,
                    row.id);
        }
        updateGeometry();
    }
    const auto row = chosen ? findData(toQString(chosen->text())) : -1;
    setCurrentIndex(row < 0 ? 0 : row); // the fallback stands first
    update();
}

void BoardChoice::hidePopup() {
    ListChoice::hidePopup();
    Q_EMIT closed();
}

} // namespace korvex::ui
