#include "platform/bus/StoreChangeSignal.h"

#include "base/Text.h"

#include <string>
#include <system_error>

namespace korvex::platform::bus {

namespace {

/// What a store is called between programs, whichever way leads there: each finds that out for its
/// own only, since another's may lie where nothing answers.
std::string nameOf(const std::filesystem::path& storeFile) {
    std::error_code failed;
    const auto name = std::filesystem::weakly_canonical(storeFile, failed);
    return failed ? storeFile.native() : name.native();
}

} // namespace

bool announceStoreChange(Bus& bus, const std::filesystem::path& storeFile) {
    const auto name = nameOf(storeFile);
    // The bus carries UTF-8 only; a store with another path is looked at less promptly.
    return !base::isValidUtf8(name) || bus.emit({.path = app::kStoreChangedPath,
                                                 .interface = app::kStoreChangedInterface,
                                                 .member = app::kStoreChangedMember},
                                                arguments(name));
}

StoreChangeListener::StoreChangeListener(Bus& bus, const std::filesystem::path& storeFile)
    : m_bus(bus), m_store(nameOf(storeFile)) {
    m_signals = m_bus.match({.path = app::kStoreChangedPath,
                             .interface = app::kStoreChangedInterface,
                             .member = app::kStoreChangedMember},
                            [this](const IncomingSignal& signal) {
                                if (signal.sender() != m_bus.uniqueName() &&
                                    signal.read<std::string>() == m_store) {
                                    m_changed.emit();
                                }
                            });
}

} // namespace korvex::platform::bus
