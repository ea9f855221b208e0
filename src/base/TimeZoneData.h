#pragma once

#include "base/Calendar.h"

#include <unicode/timezone.h>

#include <memory>
#include <string>

namespace korvex::base {

/// For the sources of this floor: keeps ICU out of the headers above.
struct TimeZone::Data {
    std::string name;
    std::unique_ptr<icu::TimeZone> zone;
};

} // namespace korvex::base
