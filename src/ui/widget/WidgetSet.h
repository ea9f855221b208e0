#pragma once

#include "app/WidgetFile.h"
#include "base/Log.h"
#include "ui/widget/WidgetWindow.h"

#include <QObject>

#include <memory>
#include <optional>
#include <vector>

namespace korvex::ui {

/// All widgets of a store, those that are shown and those that were closed: remembered as soon as
/// one is added, placed or removed. Main thread.
class WidgetSet final : public QObject {
    Q_OBJECT

public:
    WidgetSet(app::WidgetFile file, const WidgetSurroundings& surroundings, base::LogSink& log);
    ~WidgetSet() override;

    /// Shows those that are remembered. False where there are none.
    bool showRemembered();
    /// What a start by the user asks for. Without a board: shows the widgets that were closed, else
    /// adds one for the Inbox. With one: shows its widget where there is one, else adds it.
    void open(const std::optional<base::Uuid>& board);
    /// Gives the keyboard to the first of those that are shown.
    void bringForward();
    /// For the end: writes what is still to be remembered, such as of one that is being moved.
    void save();

    std::vector<WidgetWindow*> windows() const;

Q_SIGNALS:
    /// The first of them is to be seen.
    void firstPainted();
    /// None is shown any more.
    void emptied();

private:
    WidgetWindow& make(const app::RememberedWidget& remembered);
    void show(WidgetWindow& window);
    /// Shows one more, which gets the keyboard. Where there can be no more `asked` says so, or
    /// else the first one.
    void add(const std::optional<base::Uuid>& board, WidgetWindow* asked = nullptr);
    void write();
    void remove(WidgetWindow& window);
    bool hasShown() const;
    void followScreens();

    app::WidgetFile m_file;
    WidgetSurroundings m_surroundings;
    base::LogSink& m_sink;
    base::Logger m_log;
    std::vector<std::unique_ptr<WidgetWindow>> m_windows;
};

} // namespace korvex::ui
