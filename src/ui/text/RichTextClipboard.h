#pragma once

#include "richtext/text/AttributedString.h"

#include <QMimeData>

#include <memory>

namespace korvex::ui {

/// Formatted text on the clipboard and in drags. Main thread.

/// Whether there is anything that `textFrom` gives a text of.
bool hasText(const QMimeData& data);
/// The best of what the data offers: RTF, which this application writes itself and which says most,
/// else HTML, else plain text. Normalised, so it may be stored. What is too large or damaged counts
/// as not offered; whether the text is too long is for the caller to say.
richtext::AttributedString textFrom(const QMimeData& data);
/// The plain text alone.
richtext::AttributedString plainTextFrom(const QMimeData& data);

/// The text as plain text, HTML and RTF.
std::unique_ptr<QMimeData> mimeDataOf(const richtext::AttributedString& text);

} // namespace korvex::ui
