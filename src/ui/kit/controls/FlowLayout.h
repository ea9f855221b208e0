#pragma once

#include <QLayout>

#include <vector>

namespace korvex::ui {

/// Puts widgets side by side in lines, as words are: what has no room goes to the next line.
class FlowLayout final : public QLayout {
public:
    explicit FlowLayout(QWidget* parent = nullptr);
    ~FlowLayout() override;

    void addItem(QLayoutItem* item) override { m_items.push_back(item); }
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    Qt::Orientations expandingDirections() const override { return {}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return arrange({0, 0, width, 0}, Do::measure); }
    /// All of it in one line.
    QSize sizeHint() const override;
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    enum class Do { measure, place };
    /// Returns the height that the widgets take.
    int arrange(const QRect& rect, Do what) const;

    std::vector<QLayoutItem*> m_items;
};

} // namespace korvex::ui
