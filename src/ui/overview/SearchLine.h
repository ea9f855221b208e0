#pragma once

#include "base/TextFolding.h"

#include <QFontMetrics>
#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace korvex::ui {

/// One line of a text that was found, with the places that were searched for.
struct SearchLine {
    /// A place that was searched for, in UTF-16 units of the line.
    struct Mark {
        qsizetype start = 0;
        qsizetype length = 0;

        bool operator==(const Mark&) const = default;
    };

    QString text;
    std::vector<Mark> marks;

    bool operator==(const SearchLine&) const = default;

    /// The line of `text` that holds the first match; the first line with something in it when
    /// there is none. A very long line is cut to what is around the match.
    static SearchLine of(std::string_view text, const std::vector<std::string>& foldedTerms,
                         const base::TextFolding& folding);
    /// What fits into `width` pixels with the first mark in it; an ellipsis where something is
    /// left out.
    SearchLine fitted(const QFontMetrics& metrics, int width) const;

private:
    /// The same line with its beginning left out.
    SearchLine from(qsizetype start) const;
};

} // namespace korvex::ui
