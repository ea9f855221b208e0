#pragma once

#include "base/Uuid.h"
#include "model/EntryAttachment.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

#include <vector>

class QToolButton;

namespace korvex::ui {

/// The files of what is not stored yet, each as a chip with a button that takes it away; hidden
/// while there are none. Main thread.
class FileChips final : public QWidget {
    Q_OBJECT

public:
    FileChips(const Theme& theme, QWidget* parent);

    void show(const std::vector<model::EntryAttachment>& files);
    /// In another look; the chips follow when they are next shown.
    void applyTheme();

    /// The buttons that can be reached, in their order.
    const std::vector<QToolButton*>& stops() const { return m_crosses; }

Q_SIGNALS:
    void removalRequested(const korvex::base::Uuid& file);

private:
    QWidget* makeChip(const model::EntryAttachment& file);

    const Theme& m_theme;
    std::vector<base::Uuid> m_shown;
    /// Of each chip, in their order.
    std::vector<QToolButton*> m_crosses;
};

} // namespace korvex::ui
