#include "platform/bus/StoreChangeSignal.h"

#include "base/Text.h"

#include <string>
#include <system_error>

namespace korvex::platform::bus {

std::string storeNameOf(const std::filesystem::path& storeFile) {
    std::error_code failed;
    const auto name = std::filesystem::weakly_canonical(storeFile, failed);
    return failed ? storeFile.native() : name.native();
}

bool announceStoreChange(Bus& bus, const std::filesystem::path& storeFile) {
    const auto name = storeNameOf(storeFile);
    // The bus carries UTF-8 only; a store with another path is looked at less promptly.
    return !base::isValidUtf8(name) || bus.emit({.path = app::kStoreChangedPath,
                                                 .interface = app::kStoreChangedInterface,
                                                 .member = app::kStoreChangedMember},
                                                arguments(name));
}

StoreChangeListener::StoreChangeListener(Bus& bus, const std::filesystem::path& storeFile)
    : m_bus(bus), m_store(storeNameOf(storeFile)) {
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
