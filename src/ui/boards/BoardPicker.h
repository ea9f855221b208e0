#pragma once

#include "base/Signal.h"
#include "model/Board.h"
#include "ui/kit/ChoicePopover.h"
#include "ui/workspace/Workspace.h"

#include <vector>

class QLabel;

namespace korvex::ui {

class BoardPickerModel;

/// Chooses a board by a few letters of its name. Deletes itself once closed.
class BoardPicker final : public ChoicePopover {
    Q_OBJECT

public:
    /// `boards` in the order in which they are offered while nothing is typed, without `excluded`;
    /// one that is deleted or archived meanwhile leaves the list. `title` says what the choice is
    /// for: "Go to board".
    BoardPicker(const std::vector<model::Board*>& boards, const QString& title,
                const Workspace& workspace, const Theme& theme, QWidget* window,
                const model::Board* excluded = nullptr);
    ~BoardPicker() override;

    /// In the middle of the window's top.
    void open();

Q_SIGNALS:
    /// After the picker has closed.
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
