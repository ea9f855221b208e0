#pragma once

#include <filesystem>
#include <functional>

namespace korvex::app {

/// D-Bus facts of the change signal, which also is the name of the notification among our own
/// programs. It carries the store file's path without symbolic links, so that programs on other
/// stores can tell, by the text alone.
inline constexpr const char* kStoreChangedInterface = "Korvex.SharedStoreChanged";
inline constexpr const char* kStoreChangedMember = "Changed";
inline constexpr const char* kStoreChangedPath = "/Korvex/SharedStore";

/// Tells the other programs on the same store that it has changed. The signal is a hint: who gets
/// it asks the store. Must not throw; without a bus it does nothing.
class StoreChangeBroadcaster {
public:
    virtual ~StoreChangeBroadcaster() = default;
    virtual void storeChanged(const std::filesystem::path& storeFile) = 0;
};

} // namespace korvex::app
