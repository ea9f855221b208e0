#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace korvex::base {

/// The order of names as file browsers show it: by the user's locale, numbers by value, accents
/// second; names that differ only in case are equal. Costs milliseconds to make. One thread.
class NameOrder {
public:
    /// Empty means the user's locale, from LC_ALL, LC_COLLATE or LANG.
    explicit NameOrder(const std::string& locale = {});
    ~NameOrder();

    /// Less than, equal to or greater than 0.
    int compare(std::string_view left, std::string_view right) const;

private:
    struct Collator;
    std::unique_ptr<Collator> m_collator;
};

} // namespace korvex::base
