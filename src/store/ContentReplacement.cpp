#include "store/ContentReplacement.h"

#include "store/ContextCore.h"

namespace korvex::store {

ContentReplacement::ContentReplacement(ModelContext& context) : m_context(context) {
    m_context.core().removeAllRows();
}

void ContentReplacement::add(Record& detached) {
    m_context.core().writeRow(detached);
}

} // namespace korvex::store
