#include "storage/Work.h"

#include <algorithm>

namespace korvex::storage {

namespace {

constexpr std::uint64_t kSteps = 100;

} // namespace

void Work::begin(Stage stage, std::uint64_t parts) {
    m_stage = stage;
    m_parts = parts;
    m_done = 0;
    tell();
}

void Work::beginForGood(Stage stage, std::uint64_t parts) {
    m_isCancelled = nullptr;
    begin(stage, parts);
}

void Work::tell() {
    m_next = m_done + std::max<std::uint64_t>(m_parts / kSteps, 1);
    checkCancellation();
    if (m_sink) {
        const auto share = static_cast<double>(m_done) / static_cast<double>(m_parts);
        m_sink({.stage = m_stage, .fraction = m_parts == 0 ? 0 : std::min(share, 1.0)});
    }
}

} // namespace korvex::storage
