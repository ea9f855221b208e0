#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QLabel;

namespace korvex::ui {

/// Stands in for the main window while the store takes long to open, as when it is upgraded. Its
/// user can leave it by every key that ends the program or a panel. Main thread.
class StorePreparingWindow final : public QWidget {
    Q_OBJECT

public:
    /// `program` is its title.
    StorePreparingWindow(const QString& program, const Theme& theme);

Q_SIGNALS:
    /// The user does not want to wait any longer.
    void left();

protected:
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QLabel* addWords(const QString& text, const QFont& font);

    QLabel* m_what;
};

} // namespace korvex::ui
