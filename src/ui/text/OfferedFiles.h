#pragma once

#include "base/Bytes.h"

#include <QMimeData>

#include <filesystem>
#include <optional>
#include <vector>

namespace korvex::ui {

/// The files of this computer that are offered; empty when anything else is among them.
std::vector<std::filesystem::path> offeredFiles(const QMimeData& data);
/// Whether what is pasted into an entry is to be attached to it: files, or a picture without words.
/// Everything else is text for an editor.
bool isForAttaching(const QMimeData& data);
/// The picture that is offered, as a PNG file; absent when it cannot be read or is too large for an
/// attachment whatever it shows.
std::optional<base::Bytes> offeredPicture(const QMimeData& data);

} // namespace korvex::ui
