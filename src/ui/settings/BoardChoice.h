#pragma once

#include "app/AppPreferences.h"
#include "services/BoardService.h"
#include "ui/kit/theme/Theme.h"

#include <QComboBox>

namespace korvex::ui {

/// Chooses one of the boards that are not archived. Main thread.
class BoardChoice final : public QComboBox {
    Q_OBJECT

public:
    /// The service outlives it.
    BoardChoice(const services::BoardService& boards, const Theme& theme);

    /// Shows the boards as they are now, and the one that a setting names: the Inbox for none, and
    /// as the fallback for one that is gone or archived. Throws what the store throws.
    void show(const app::AppPreferences::BoardID& chosen);

Q_SIGNALS:
    void chosen(const korvex::base::Uuid& board);

private:
    const services::BoardService& m_boards;
    const Theme& m_theme;
};

} // namespace korvex::ui
