#pragma once

#include "ui/kit/speech/RowSpeech.h"

#include <QAccessibleWidget>
#include <QHash>

namespace korvex::ui {

/// A list with rows that speak, as a screen reader walks in it: its children are its rows, made
/// when they are first asked for. Owned by Qt's cache of such interfaces. Main thread.
class AccessibleList final : public QAccessibleWidget {
public:
    /// Null for a view that is no `RowSpeech`: Qt knows what to tell of that.
    static AccessibleList* of(QAbstractItemView& view);
    ~AccessibleList() override;

    QAbstractItemView& view() const;
    RowSpeech& speech() const { return m_speech; }

    int childCount() const override;
    QAccessibleInterface* child(int row) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;

private:
    AccessibleList(QAbstractItemView& view, RowSpeech& speech);

    void forgetRowsThatAreGone() const;

    RowSpeech& m_speech;
    mutable QHash<QPersistentModelIndex, QAccessible::Id> m_rows;
};

/// The viewport of such a list, in which the editor of a row stands: a part of that row.
class AccessibleRowContent final : public QAccessibleWidget {
public:
    /// Null for a widget that is no such viewport.
    static AccessibleRowContent* of(QWidget& widget);

    QAccessibleInterface* parent() const override;

private:
    AccessibleRowContent(QWidget& viewport, QAbstractItemView& view);

    QAbstractItemView& m_view;
};

} // namespace korvex::ui
