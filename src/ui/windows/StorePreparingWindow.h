#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

namespace korvex::ui {

/// Stands in for the main window while the store takes long to open, as when it is upgraded. Its
/// user cannot close it: that would end nothing, and leave a program that shows nothing.
class StorePreparingWindow final : public QWidget {
    Q_OBJECT

public:
    explicit StorePreparingWindow(const Theme& theme);

protected:
    void closeEvent(QCloseEvent* event) override;
};

} // namespace korvex::ui
