#pragma once

#include "ui/kit/overlays/Popover.h"

class QLineEdit;
class QListView;

namespace korvex::ui {

/// Lets one of many be chosen by typing a part of its name: a field, and under it a list. The field
/// has the keyboard; Up and Down walk in the list, Return chooses, Escape gives up.
class ChoicePopover : public Popover {
    Q_OBJECT

public:
    ~ChoicePopover() override;

protected:
    struct Names {
        QString choice;
        QString field;
        QString list;
    };
    /// Takes the list, which has its model by the time of `setUp`.
    ChoicePopover(QListView* list, const Theme& theme, QWidget* window);
    void setUp(const Names& names);

    QLineEdit& field() { return *m_field; }
    QListView& list() { return *m_list; }

    /// Fills the list for what is typed now.
    virtual void fill() = 0;
    /// Takes the current row of the list.
    virtual void choose() = 0;

    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QLineEdit* m_field;
    QListView* m_list;
};

} // namespace korvex::ui
