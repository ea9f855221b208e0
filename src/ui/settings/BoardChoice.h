#pragma once

#include "app/AppPreferences.h"
#include "services/BoardService.h"
#include "ui/kit/controls/ListChoice.h"
#include "ui/kit/theme/Theme.h"

#include <QColor>

#include <vector>

namespace korvex::ui {

/// Chooses one of the boards that are not archived. Main thread.
class BoardChoice final : public ListChoice {
    Q_OBJECT

public:
    enum class Offered { inNeed, always };
    /// What is said of what stands in for a board.
    struct Fallback {
        /// The setting names none.
        QString unset;
        /// It names one that is gone or archived.
        QString gone;
        /// Whether it can be chosen in place of a board, or only stands in.
        Offered offered = Offered::inNeed;
    };
    /// The service outlives it.
    BoardChoice(const services::BoardService& boards, Fallback fallback, const Theme& theme);

    /// Shows the boards as they are now, and the one that a setting names. Does nothing while the
    /// list is open: then to be called when it has `closed`. Throws what the store throws.
    void show(const app::AppPreferences::BoardID& chosen);

    void hidePopup() override;

Q_SIGNALS:
    void chosen(const korvex::base::Uuid& board);
    /// No board, but what stands in for one.
    void fallbackChosen();
    void closed();

private:
    struct Row {
        QString icon;
        QColor color;
        QString name;
        /// Empty for the fallback, which is no board of its own.
        QString id;
        bool operator==(const Row&) const = default;
    };
    std::vector<Row> wantedRows(const app::AppPreferences::BoardID& chosen) const;

    const services::BoardService& m_boards;
    Fallback m_fallback;
    const Theme& m_theme;
    std::vector<Row> m_rows;
};

} // namespace korvex::ui
