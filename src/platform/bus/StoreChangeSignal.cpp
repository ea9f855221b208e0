#include "platform/bus/StoreChangeSignal.h"

#include "base/Text.h"

#include <system_error>

namespace korvex::platform::bus {

bool announceStoreChange(Bus& bus, const std::filesystem::path& storeFile) {
    // The bus carries UTF-8 only; a store with another path is looked at less promptly.
    return !base::isValidUtf8(storeFile.native()) ||
           bus.emit({.path = app::kStoreChangedPath,
                     .interface = app::kStoreChangedInterface,
                     .member = app::kStoreChangedMember},
                    arguments(storeFile.native()));
}

StoreChangeListener::StoreChangeListener(Bus& bus, std::filesystem::path storeFile)
    : m_bus(bus), m_storeFile(std::move(storeFile)) {
    m_signals = m_bus.match({.path = app::kStoreChangedPath,
                             .interface = app::kStoreChangedInterface,
                             .member = app::kStoreChangedMember},
                            [this](const IncomingSignal& signal) {
                                const std::filesystem::path changed(signal.read<std::string>());
                                std::error_code ignored;
                                if (signal.sender() != m_bus.uniqueName() &&
                                    (changed == m_storeFile ||
                                     std::filesystem::equivalent(changed, m_storeFile, ignored))) {
                                    m_changed.emit();
                                }
                            });
}

} // namespace korvex::platform::bus
