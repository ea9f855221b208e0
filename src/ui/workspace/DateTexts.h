#pragma once

#include "base/DateFormats.h"
#include "base/Signal.h"

#include <memory>
#include <string>
#include <utility>

namespace korvex::ui {

/// The date texts of one locale in the machine's time zone. Costs milliseconds at the first
/// use, so a board without dates never pays for it. Main thread.
class DateTexts {
public:
    /// A tag that `base::DateFormats` understands; empty for the user's locale.
    explicit DateTexts(std::string locale = {}) : m_locale(std::move(locale)) {}

    const base::DateFormats& formats() const { return *shared(); }
    /// The formats for who keeps them: these stay as they are when the zone changes.
    std::shared_ptr<const base::DateFormats> shared() const {
        if (!m_formats) {
            m_formats =
                std::make_shared<const base::DateFormats>(m_locale, base::TimeZone::system());
        }
        return m_formats;
    }

    /// The time zone may have changed.
    void renew() {
        m_formats.reset();
        m_didRenew.emit();
    }
    /// For who shows dates that nothing else renews.
    base::Signal<>& didRenew() { return m_didRenew; }

private:
    std::string m_locale;
    base::Signal<> m_didRenew;
    mutable std::shared_ptr<const base::DateFormats> m_formats;
};

} // namespace korvex::ui
