#pragma once

#include "ui/kit/Theme.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace korvex::ui {

/// The line over an archived board that says so, with the button that brings the board back.
class ArchivedNotice final : public QWidget {
    Q_OBJECT

public:
    explicit ArchivedNotice(const Theme& theme, QWidget* parent = nullptr);

Q_SIGNALS:
    void unarchiveRequested();

private:
    void applyTheme();

    const Theme& m_theme;
    QLabel* m_icon;
    QLabel* m_text;
    QPushButton* m_unarchive;
};

} // namespace korvex::ui
