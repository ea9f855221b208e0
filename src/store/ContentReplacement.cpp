#include "store/ContentReplacement.h"

#include "store/ContextCore.h"

#include <utility>

namespace korvex::store {

ContentReplacement::ContentReplacement(ModelContext& context, std::string note)
    : m_context(context) {
    m_context.core().removeAllRows(std::move(note));
}

void ContentReplacement::add(Record& detached) {
    m_context.core().writeRow(detached);
}

} // namespace korvex::store
