#pragma once

#include "ui/kit/theme/Theme.h"

#include <QMimeData>
#include <QTextEdit>

#include <functional>
#include <utility>

namespace korvex::ui {

/// What Quick Entry is typed into: plain text that grows with its lines up to a height, and scrolls
/// from there. Return and what is no text are for whoever listens. Main thread.
class CaptureText final : public QTextEdit {
    Q_OBJECT

public:
    CaptureText(const Theme& theme, QWidget* parent);

    /// In another look. What is typed, selected and composed stays.
    void applyTheme();
    /// Every character as it is, with a line feed for every break.
    QString typed() const;
    /// Shows another text, of which no step can be taken back; the caret is at its end.
    void setTyped(const QString& text);

    /// What is to be read while nothing is typed.
    void setHint(const QString& hint);

    /// Asked before a text is pasted or dropped: one that could never be stored may take long to be
    /// laid out.
    void setTakes(std::function<bool(const QString& text)> takes) { m_takes = std::move(takes); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return {0, heightOf(1)}; }

Q_SIGNALS:
    void saveRequested();
    /// What was pasted or dropped is no text but something to attach.
    void attachmentsOffered(const QMimeData* offered);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;

    void resizeEvent(QResizeEvent* event) override;

private:
    /// In pixels.
    int heightOf(int lines) const;
    /// Of all lines of the hint in the room that there is, so that nothing moves at the first
    /// letter.
    int heightOfHint() const;

    const Theme& m_theme;
    int m_widthOfHint = 0;
    std::function<bool(const QString&)> m_takes;
};

} // namespace korvex::ui
