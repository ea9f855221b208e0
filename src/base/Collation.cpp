#include "base/Collation.h"

#include "base/UserLocale.h"

#include <unicode/coll.h>

#include <stdexcept>

namespace korvex::base {

struct NameOrder::Collator {
    std::unique_ptr<icu::Collator> icu;
};

NameOrder::NameOrder(const std::string& locale) : m_collator(std::make_unique<Collator>()) {
    UErrorCode status = U_ZERO_ERROR;
    m_collator->icu.reset(icu::Collator::createInstance(userLocale(locale, "LC_COLLATE"), status));
    if (U_FAILURE(status)) {
        throw std::runtime_error(std::string("ICU has no collator: ") + u_errorName(status));
    }
    m_collator->icu->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
    // Letters and accents; case is the third difference.
    m_collator->icu->setStrength(icu::Collator::SECONDARY);
}

NameOrder::~NameOrder() = default;

int NameOrder::compare(std::string_view left, std::string_view right) const {
    UErrorCode status = U_ZERO_ERROR;
    return m_collator->icu->compareUTF8(icu::StringPiece(left), icu::StringPiece(right), status);
}

} // namespace korvex::base
