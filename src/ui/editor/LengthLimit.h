#pragma once

#include <QObject>
#include <QStringView>

#include <cstddef>

class QTextDocument;

namespace korvex::ui {

/// Keeps the text of a document within what an entry may hold. To count all its characters takes
/// too long for the press of a key, so it is known between two counts how many more fit at least.
/// Main thread; the document must outlive it.
class LengthLimit final : public QObject {
    Q_OBJECT

public:
    explicit LengthLimit(const QTextDocument& document);

    /// Whether this may take the place of the characters between two positions of the document.
    bool allowsReplacing(int from, int to, QStringView replacement);

private:
    /// Whether so many more UTF-16 units fit in, judged without counting characters.
    bool isWithinKnownRoom(qsizetype added) const;

    const QTextDocument& m_document;
    /// How many characters can be added at least before all must be counted again.
    std::ptrdiff_t m_knownRoom = 0;
};

} // namespace korvex::ui
