#pragma once

#include "ui/kit/theme/Theme.h"

#include <QFrame>

#include <functional>

class QLabel;
class QTimer;
class QToolButton;

namespace korvex::ui {

/// A few words over what they concern, with a button that takes them away: what was refused, or
/// what the user should know. Hidden while there is nothing to say.
class ErrorBanner final : public QFrame {
    Q_OBJECT

public:
    explicit ErrorBanner(const Theme& theme, QWidget* parent = nullptr);

    enum class Tone { error, notice };
    void showMessage(const QString& message, Tone tone = Tone::error);
    /// A notice that goes away by itself.
    void tell(const QString& message);
    /// The same with a button that does something about it.
    void offer(const QString& message, const QString& action, std::function<void()> perform);
    /// What was offered does not apply any more; anything else that is said stays.
    void endOffer();
    void clear();
    QString message() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();

    const Theme& m_theme;
    Tone m_tone = Tone::error;
    QLabel* m_sign;
    QLabel* m_text;
    QToolButton* m_action;
    QToolButton* m_close;
    std::function<void()> m_perform;
    QTimer* m_end;
};

} // namespace korvex::ui
