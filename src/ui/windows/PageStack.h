#pragma once

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

    /// How the window deals with a page, whatever its class.
    struct Page {
        /// The window's title while it is shown; a board's page has its board's name.
        QString title;
        std::function<QWidget*()> make;
        /// Takes the keyboard.
        std::function<void()> focus;
        /// The store's records have changed while it is in sight, or it comes in sight. None for a
        /// page that sees to that itself.
        std::function<void()> storeChanged = [] {};
        /// Tells what was refused.
        std::function<void(const QString&)> showMessage;
    };
    void add(PageKind kind, Page page);

    void show(PageKind kind);
    PageKind current() const { return m_current; }
    const QString& title() const { return page().title; }
    void focusCurrent() { page().focus(); }
    void showMessage(const QString& message) { page().showMessage(message); }
    void storeChanged() { page().storeChanged(); }

private:
    struct Slot {
        Page page;
        QWidget* widget = nullptr;
    };
    const Page& page() const { return m_pages.at(m_current).page; }

    std::map<PageKind, Slot> m_pages;
    PageKind m_current = PageKind::board;
};

} // namespace korvex::ui
