#pragma once

#include <QTranslator>

namespace korvex::ui {

/// The plurals of the program's own language: "%n todo(s)" is said as "1 todo" and "3 todos", and
/// "%n (entry|entries)" as "1 entry" and "3 entries". Catalogues of other languages are installed
/// after it and come first; their translators are given all forms that their language has.
class Plurals final : public QTranslator {
    Q_OBJECT

public:
    using QTranslator::QTranslator;

    bool isEmpty() const override { return false; }
    /// Null, which leaves the text as it is, where no number is told.
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int n) const override;
};

} // namespace korvex::ui
