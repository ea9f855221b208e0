#pragma once

#include "ui/kit/overlays/ErrorBanner.h"

class QPushButton;

namespace korvex::ui {

class WordsAndButton;

/// Says at the foot of an edited row why something was refused, or what has become of the entry,
/// and offers to give up what was typed. Main thread.
class RowRefusal final : public QFrame {
    Q_OBJECT

public:
    RowRefusal(const Theme& theme, QWidget* editor);

    void setMessage(const QString& message, ErrorBanner::Tone tone);
    /// Whether there is anything to be given up. True when that is another than before, and with it
    /// perhaps the height.
    bool setDiscardable(bool discardable);
    QString message() const;
    /// The height that it needs at this width.
    int neededHeight(int width) const;

Q_SIGNALS:
    void discarded();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor color() const;
    void applyTheme();

    const Theme& m_theme;
    ErrorBanner::Tone m_tone = ErrorBanner::Tone::error;
    QLabel* m_text;
    QPushButton* m_discard;
    WordsAndButton* m_words;
};

} // namespace korvex::ui
