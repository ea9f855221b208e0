#pragma once

#include "ui/kit/theme/Theme.h"

#include <QVBoxLayout>

namespace korvex::ui {

/// What stands one under the other in the column of a page, however wide the page is.
class ColumnLayout final : public QVBoxLayout {
    Q_OBJECT

public:
    /// Without margins and distances of its own.
    explicit ColumnLayout(const Theme& theme, QWidget* parent = nullptr);

    int heightForWidth(int width) const override;
    int minimumHeightForWidth(int width) const override;
    void setGeometry(const QRect& rect) override;

private:
    const Theme& m_theme;
};

} // namespace korvex::ui
