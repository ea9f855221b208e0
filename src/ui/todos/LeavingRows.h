#pragma once

#include "model/Entry.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <unordered_map>

class QWidget;

namespace korvex::ui {

/// How long a tick is to be seen before its row leaves.
inline constexpr std::chrono::milliseconds kTickShown{500};

/// The todos whose rows are leaving a list: each shrinks for a moment and is gone then. Main
/// thread.
class LeavingRows final : public QObject {
    Q_OBJECT

public:
    /// `view` says how fast things move.
    explicit LeavingRows(QWidget& view);

    /// Calls `done` at the end.
    void start(const model::Entry& entry, std::function<void()> done);
    /// What is left now of a row's height.
    int height(const model::Entry* entry, int fullHeight) const;

Q_SIGNALS:
    /// The row of this todo has another height.
    void moved(const korvex::model::Entry& entry);

private:
    QWidget& m_view;
    /// How much is left, from 1 to 0.
    std::unordered_map<const model::Entry*, double> m_parts;
};

} // namespace korvex::ui
