#pragma once

#include "ui/kit/theme/Theme.h"

#include <QAbstractButton>

namespace korvex::ui {

/// A row that leads to a page: an icon, a name, and something short at its end. It looks as the
/// sidebar's boards do; checked while its page is shown.
class SidebarRow final : public QAbstractButton {
    Q_OBJECT

public:
    SidebarRow(const QString& iconName, const QString& text, const Theme& theme,
               QWidget* parent = nullptr);

    /// Shows how many open todos there are; 0 is not shown.
    void setCount(int count);
    /// Shows `note` at the row's end; `description` says to screen readers what it means.
    void setNote(const QString& note, const QString& description);
    const QString& note() const { return m_note; }
    /// An icon that asks for a look; empty for none. Who sets it describes it by the note.
    void setMark(const QString& iconName);
    void setIconColor(const QColor& color) { m_iconColor = color; }
    QSize sizeHint() const override;

Q_SIGNALS:
    /// Up (-1) or Down (1) was pressed.
    void walked(int direction);
    /// A key that leads to the first row (-1) or to the last one (1).
    void walkedToEnd(int direction);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    /// Only its page checks and unchecks it.
    void nextCheckState() override {}

private:
    const Theme& m_theme;
    QString m_iconName;
    /// Not valid: the theme's quiet one, and its accent while the page is shown.
    QColor m_iconColor;
    QString m_note;
    QString m_mark;
};

} // namespace korvex::ui
