#pragma once

#include "ui/kit/theme/Theme.h"

#include <QLabel>

namespace korvex::ui {

/// Words of the settings, in the look of what they are, also when the theme changes. They wrap.
/// Main thread.
class SettingsLabel final : public QLabel {
    Q_OBJECT

public:
    enum class Kind {
        title,
        heading,
        name,
        /// What a setting is, where it is only told.
        value,
        /// What is to be known of a row.
        note,
        /// Why something was not done.
        refusal,
    };
    SettingsLabel(Kind kind, const QString& text, const Theme& theme, QWidget* parent = nullptr);

    /// Says it in place of what was said; takes no room while there is nothing to say.
    void say(const QString& text);
    const QString& said() const { return m_said; }
    /// The same, read out at once: what came of something that the user has done.
    void announce(const QString& text);

    /// A value wants to stand in one line, and makes do with less.
    QSize sizeHint() const override;

private:
    void applyTheme();

    Kind m_kind;
    QString m_said;
    const Theme& m_theme;
};

} // namespace korvex::ui
