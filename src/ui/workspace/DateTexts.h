#pragma once

#include "base/DateFormats.h"

#include <memory>

namespace korvex::ui {

/// The date texts of the user's locale in the machine's time zone. Costs milliseconds at the first
/// use, so a board without dates never pays for it. Main thread.
class DateTexts {
public:
    const base::DateFormats& formats() const { return *shared(); }
    /// The formats for who keeps them: these stay as they are when the zone changes.
    std::shared_ptr<const base::DateFormats> shared() const {
        if (!m_formats) {
            m_formats =
                std::make_shared<const base::DateFormats>(std::string(), base::TimeZone::system());
        }
        return m_formats;
    }

    /// The time zone may have changed.
    void renew() { m_formats.reset(); }

private:
    mutable std::shared_ptr<const base::DateFormats> m_formats;
};

} // namespace korvex::ui
