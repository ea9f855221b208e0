#include "ui/settings/UnkeptLine.h"

namespace korvex::ui {

UnkeptLine::UnkeptLine(app::UserDefaults& defaults, const Theme& theme, QWidget* parent)
    : NoticeLine({.icon = QStringLiteral("warning-circle"),
                  .text = tr("Settings cannot be saved at the moment: their file or folder cannot "
                             "be written, or another program keeps them locked. What is set holds "
                             "until Korvex ends. Korvex keeps trying; this line goes when they are "
                             "saved.")},
                 theme, Place::atTop) {
    setParent(parent);
    const auto show = [this, &defaults] { setHolds(!defaults.isKept()); };
    m_changes = defaults.keptChanged().connect(show);
    show();
}

} // namespace korvex::ui
