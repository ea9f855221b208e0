#pragma once

#include "ui/kit/pages/Page.h"
#include "ui/windows/PageKind.h"

#include <QStackedWidget>

#include <functional>
#include <map>

namespace korvex::ui {

/// The pages at the window's right, one of them in sight. A page is made when it is first shown, so
/// that a start pays for none but the board's.
class PageStack final : public QStackedWidget {
    Q_OBJECT

public:
    explicit PageStack(QWidget* parent = nullptr);

    using MakePage = std::function<Page*()>;
    void add(PageKind kind, MakePage make);

    /// Leaves the page that is in sight before another is shown. False when it cannot be left; then
    /// it stays, and says why.
    bool show(PageKind kind);
    PageKind currentKind() const { return m_current; }
    /// The page in sight; one must have been shown.
    Page& current() const { return *m_pages.at(m_current).page; }

Q_SIGNALS:
    /// By one of the pages.
    void undoRequested(std::uint64_t step);

private:
    struct Slot {
        MakePage make;
        Page* page = nullptr;
    };

    std::map<PageKind, Slot> m_pages;
    PageKind m_current = PageKind::board;
};

} // namespace korvex::ui
