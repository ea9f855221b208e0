#pragma once

#include "ui/settings/SettingsRow.h"

#include <QWidget>

class QVBoxLayout;

namespace korvex::ui {

/// Rows that belong together, on one ground and with lines between them. Main thread.
class SettingsGroup final : public QWidget {
    Q_OBJECT

public:
    SettingsGroup(const Theme& theme, QWidget* parent);

    /// See SettingsRow.
    SettingsRow& addRow(const QString& name, QWidget* control = nullptr);
    /// A row that is more than a SettingsRow.
    void add(QWidget* row);
    /// Deletes all rows.
    void clear();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Theme& m_theme;
    QVBoxLayout* m_rows;
};

} // namespace korvex::ui
