#pragma once

#include "base/Error.h"

#include <string>

namespace korvex::model {

enum class EntryServiceErrorCase {
    emptyContent,
    contentTooLong,
    invalidReorder,
    readOnlyStore,
    invalidSchedule,
    pastReminder,
    entryUnavailable,
    headingAttachments,
};
std::string descriptionOf(EntryServiceErrorCase which);
std::string domainOf(EntryServiceErrorCase which);
using EntryServiceError = base::TypedError<EntryServiceErrorCase>;

enum class BoardServiceErrorCase { emptyName, protectedBoard, invalidIcon, invalidIconColor };
std::string descriptionOf(BoardServiceErrorCase which);
std::string domainOf(BoardServiceErrorCase which);
using BoardServiceError = base::TypedError<BoardServiceErrorCase>;

} // namespace korvex::model
