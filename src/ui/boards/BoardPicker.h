#pragma once

#include "base/Signal.h"
#include "base/TextFolding.h"
#include "model/Board.h"
#include "store/ModelContext.h"
#include "ui/kit/overlays/ChoicePopover.h"

#include <vector>

class QLabel;

namespace korvex::ui {

class BoardPickerModel;

/// Chooses a board by a few letters of its name. Deletes itself once closed.
class BoardPicker final : public ChoicePopover {
    Q_OBJECT

public:
    struct Offer {
        /// Says what the choice is for: "Go to board".
        QString title;
        /// The boards in the order in which they are offered while nothing is typed. One that is
        /// deleted or archived meanwhile leaves the list.
        std::vector<model::Board*> boards;
    };
    BoardPicker(Offer offer, store::ModelContext& context, const base::TextFolding& folding,
                const Theme& theme, QWidget* window);
    ~BoardPicker() override;

    /// Shows it in the middle of the window's top.
    void open();
    /// Shows it below what it is opened by, which closes it too.
    void openUnder(const QWidget& opener);

Q_SIGNALS:
    /// Emitted after the picker has closed.
    void chosen(korvex::model::Board* board);

protected:
    void fill() override;
    void choose() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    BoardPickerModel* m_model;
    QLabel* m_nothing;
    base::Subscription m_changes;
};

} // namespace korvex::ui
