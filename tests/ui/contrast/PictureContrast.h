#pragma once

#include "ui/contrast/PaintRecord.h"

#include <QColor>
#include <QImage>

#include <string>
#include <vector>

class QWidget;

namespace korvex::tests {

/// The contrasts of a widget as it shows itself, measured from the colours of its picture.
/// On a screen of three pixels for one every stroke of a letter or sign has some that its edges do
/// not blur.
class PictureContrast {
public:
    /// What texts, and what is no text but is to be made out, must have against their ground.
    struct Limits {
        double text = 4.5;
        double marks = 3.0;
    };
    PictureContrast(QWidget& widget, const Limits& limits);

    /// A line for each that has less: what it is, where, and how much.
    const std::vector<std::string>& faint() const { return m_faint; }
    /// How many were measured.
    int texts() const { return m_texts; }
    int marks() const { return m_marks; }

private:
    double measure(const PaintRecord::Drawn& drawn) const;
    double measureOutline(const PaintRecord::Drawn& drawn, const QColor& ground) const;
    QColor groundOf(const PaintRecord::Drawn& drawn) const;

    QImage m_picture;
    std::vector<std::string> m_faint;
    int m_texts = 0;
    int m_marks = 0;
};

} // namespace korvex::tests
