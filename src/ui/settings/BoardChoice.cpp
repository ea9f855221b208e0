#include "ui/settings/BoardChoice.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <algorithm>

namespace korvex::ui {

BoardChoice::BoardChoice(const services::BoardService& boards, const Theme& theme)
    : m_boards(boards), m_theme(theme) {
    setSizeAdjustPolicy(QComboBox::AdjustToContents);
    connect(this, &QComboBox::activated, this, [this](int row) {
        // The fallback is no board of its own.
        if (const auto id = base::Uuid::parse(toUtf8(itemData(row).toString()))) {
            Q_EMIT chosen(*id);
        }
    });
}

void BoardChoice::show(const app::AppPreferences::BoardID& chosen) {
    const auto active = services::BoardService::activeBoards(m_boards.boards());
    const auto isThere = [&](const model::Board* board) { return board->id() == chosen; };
    const auto isGone = chosen && std::none_of(active.begin(), active.end(), isThere);
    const auto* const inbox = app::AppPreferences::fallbackBoard(active);
    clear();
    if (isGone) {
        addItem(tr("Inbox (fallback)"));
    }
    for (const auto* const board : active) {
        const auto icon = IconSet::icon(boardIconName(board->iconSystemName()),
                                        iconColorOf(*board, m_theme.colors()));
        addItem(icon, toQString(board->name()), toQString(board->id().text()));
        if (!isGone && (chosen ? isThere(board) : board == inbox)) {
            setCurrentIndex(count() - 1);
        }
    }
}

} // namespace korvex::ui
