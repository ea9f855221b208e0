#include "model/ServiceErrors.h"

namespace korvex::model {

std::string descriptionOf(EntryServiceErrorCase which) {
    switch (which) {
    case EntryServiceErrorCase::emptyContent:
        return "Entry content cannot be empty.";
    case EntryServiceErrorCase::contentTooLong:
        return "Entries can contain up to 10,000 characters. Formatted text must also fit within "
               "1 MB. Shorten the text or split it into smaller entries. Nothing was inserted or "
               "saved.";
    case EntryServiceErrorCase::invalidReorder:
        return "The entries are no longer available in this board.";
    case EntryServiceErrorCase::readOnlyStore:
        return "The local store is read-only.";
    case EntryServiceErrorCase::invalidSchedule:
        return "Choose a valid todo schedule.";
    case EntryServiceErrorCase::pastReminder:
        return "Choose a reminder in the future.";
    case EntryServiceErrorCase::entryUnavailable:
        return "This entry or board is no longer available. Your changes have not been saved. "
               "Reopen the board and try again.";
    case EntryServiceErrorCase::headingAttachments:
        return "Headings cannot have new attachments. Change the entry to body text to attach "
               "files.";
    }
    return {};
}

std::string domainOf(EntryServiceErrorCase) {
    return "Korvex.EntryService";
}

std::string descriptionOf(BoardServiceErrorCase which) {
    switch (which) {
    case BoardServiceErrorCase::emptyName:
        return "Board names cannot be empty.";
    case BoardServiceErrorCase::protectedBoard:
        return "Default boards cannot be archived or deleted.";
    case BoardServiceErrorCase::invalidIcon:
        return "Choose an icon from the board icon menu.";
    case BoardServiceErrorCase::invalidIconColor:
        return "Choose a color from the board icon color menu.";
    }
    return {};
}

std::string domainOf(BoardServiceErrorCase) {
    return "Korvex.BoardService";
}

} // namespace korvex::model
