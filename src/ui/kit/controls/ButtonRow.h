#pragma once

#include <QBoxLayout>

#include <initializer_list>

namespace korvex::ui {

/// The buttons at the foot of a panel: side by side at the end of the line, or one below the other
/// and as wide as the panel where there is no room for that.
class ButtonRow final : public QBoxLayout {
public:
    ButtonRow(std::initializer_list<QWidget*> buttons, int spacing);

    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int minimumHeightForWidth(int width) const override { return heightForWidth(width); }
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    struct Extent {
        int sum = 0;
        int most = 0;
    };
    /// Of the buttons, with what is between them.
    Extent extent(Qt::Orientation along) const;
    bool isBeside(int width) const { return extent(Qt::Horizontal).sum <= width; }
};

} // namespace korvex::ui
