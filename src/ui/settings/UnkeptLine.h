#pragma once

#include "app/UserDefaults.h"
#include "ui/kit/pages/NoticeLine.h"

namespace korvex::ui {

/// Says at the top of a window while settings cannot be kept. Main thread.
class UnkeptLine final : public NoticeLine {
    Q_OBJECT

public:
    UnkeptLine(app::UserDefaults& defaults, const Theme& theme, QWidget* parent);

private:
    base::Subscription m_changes;
};

} // namespace korvex::ui
