#pragma once

#include "model/Entry.h"

#include <string>
#include <string_view>
#include <unordered_map>

namespace korvex::cli {

class Session;

/// The due labels of many entries at one moment. Formats are made when the first entry has a
/// schedule, and a day's label once: a label costs more than all else about a printed line.
class DueLabels {
public:
    explicit DueLabels(Session& session) : m_session(session) {}

    /// Empty for an entry without a label. Valid until the next call.
    std::string_view label(const model::Entry& entry);

private:
    Session& m_session;
    std::unordered_map<base::DayNumber, std::string> m_labelsOfDays;
    std::string m_label;
};

} // namespace korvex::cli
