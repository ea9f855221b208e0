#pragma once

#include "ui/kit/theme/Theme.h"

#include <QFrame>

#include <cstdint>
#include <functional>
#include <vector>

class QLabel;
class QPushButton;
class QTimer;
class QToolButton;

namespace korvex::ui {

class WordsAndButton;

/// A few words over what they concern, with a button that takes them away: what was refused, or
/// what the user should know. Of several messages the last one is seen, and when it ends, the one
/// before it again. Only who has said something ends it, or the user, or its time. Hidden while
/// there is nothing to say. Main thread.
class ErrorBanner final : public QFrame {
    Q_OBJECT

public:
    explicit ErrorBanner(const Theme& theme, QWidget* parent = nullptr);

    enum class Tone { error, notice };
    enum class Lasts {
        untilEnded,
        /// It goes by itself, some seconds after nothing has been said over it.
        shortly,
    };
    struct Message {
        QString text;
        Tone tone = Tone::error;
        Lasts lasts = Lasts::untilEnded;
        /// Of a button that does something about it, and ends it; empty for none.
        QString action = {};
        std::function<void()> perform = {};
    };
    /// Knows a message again; none has 0.
    using MessageId = std::uint64_t;

    /// Says it over all that is said already. `instead` ends.
    MessageId say(Message message, MessageId instead = 0);
    /// It is not so any more. Does nothing for what has ended.
    void end(MessageId id);
    /// What is seen; empty for nothing.
    QString message() const;

    /// As wide as all of it takes in one line, up to the measure of a text.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Said {
        MessageId id;
        Message message;
    };

    /// Shows the last message, if that is not in sight already.
    void showLast();
    void endShown();
    /// In one line.
    int widthOfWords() const;
    void applyTheme();

    const Theme& m_theme;
    QLabel* m_sign;
    QLabel* m_text;
    QPushButton* m_action;
    QToolButton* m_close;
    WordsAndButton* m_words;
    QTimer* m_end;
    std::vector<Said> m_said;
    MessageId m_shown = 0;
    MessageId m_lastId = 0;
};

} // namespace korvex::ui
