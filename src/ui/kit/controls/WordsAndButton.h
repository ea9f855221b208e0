#pragma once

#include <QBoxLayout>

class QLabel;

namespace korvex::ui {

/// Words that wrap, and a button beside them; where that would leave the words too narrow a column,
/// the button stands below. A button that is hidden takes no room.
class WordsAndButton final : public QBoxLayout {
public:
    /// Where the button stands in the line below the words.
    enum class Below { atBeginning, atEnd };
    WordsAndButton(QWidget& words, QWidget& button, Below below = Below::atEnd);

    /// In pixels: beside a button the words are not to have less.
    void setNarrowest(int width) { m_narrowest = width; }
    /// In pixels, between the two where the button stands beside the words, and the same below
    /// them unless that is set behind it.
    void setSpacing(int spacing) override;
    void setSpacingBelow(int spacing);

    /// Not in height, though below each other the words would take what is left of that.
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    int minimumHeightForWidth(int width) const override { return heightForWidth(width); }
    QSize minimumSize() const override;
    void setGeometry(const QRect& rect) override;

private:
    /// What is left for the words where the button stands beside them.
    int roomBeside(int width) const;
    bool isBeside(int width) const { return roomBeside(width) >= m_narrowest; }

    Below m_below;
    int m_narrowest = 0;
    int m_spacingBeside = 0;
    int m_spacingBelow = 0;
};

/// Puts a short note, which stands beside words in place of a button, into the middle of their
/// first line; below them it keeps its place. To be called when fonts or the width have changed.
void alignNote(QLabel& note, const QLabel& words, const WordsAndButton& layout);

} // namespace korvex::ui
