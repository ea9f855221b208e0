#pragma once

#include "ui/kit/overlays/Popover.h"
#include "ui/kit/theme/Theme.h"

#include <QObject>
#include <QPointer>
#include <QRect>
#include <QWidget>

namespace korvex::ui {

/// Keeps a small window as large as what it shows, the popover that is open in it too, and its
/// upper edge where that was, on one part of the screen. Main thread; both outlive it.
class PanelRoom final : public QObject {
    Q_OBJECT

public:
    PanelRoom(QWidget& panel, const Theme& theme);

    /// From now on it is there.
    void placeOn(const QRect& screen);
    /// Room for a popover below the control that it belongs to, or in the middle where it belongs
    /// to none, until it closes.
    void makeFor(Popover& popover, const QWidget* opener);
    /// The popover for which there is room now, where this has opened it; else null.
    Popover* openedBy(const QWidget& opener) const;
    /// Whether one is open, and comes back with the panel where that is put aside for a moment.
    bool isOpen() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fit();
    int heightForPopover() const;

    QWidget& m_panel;
    const Theme& m_theme;
    QRect m_screen;
    QPointer<Popover> m_popover;
    QPointer<const QWidget> m_opener;
    bool m_isFitting = false;
};

} // namespace korvex::ui
