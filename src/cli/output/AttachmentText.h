#pragma once

#include "services/AttachmentList.h"

#include <string>

namespace korvex::cli {

class Json;
class Session;

/// What the line of an entry says of them: "+2 files"; nothing when there are none.
std::string attachmentMark(const services::AttachmentList& list);

/// One attachment a line: short identifier, size, name.
void printAttachments(Session& session, const services::AttachmentList& list);

/// An array of `id`, `filename` and `size`; null when they cannot be read.
void writeAttachments(Json& json, const services::AttachmentList& list);

} // namespace korvex::cli
