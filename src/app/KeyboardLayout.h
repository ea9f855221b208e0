#pragma once

#include "base/Signal.h"

#include <cstdint>
#include <string>

namespace korvex::app {

/// What is printed on the keys of the layout that the user types with now. Main thread.
class KeyboardLayout {
public:
    virtual ~KeyboardLayout() = default;

    /// The character that the key types without modifiers, UTF-8; empty where it types none.
    virtual std::string character(std::uint32_t keyCode) const = 0;
    /// Emitted when keys may have other characters than before.
    virtual base::Signal<>& didChange() = 0;
};

/// Of a keyboard that nobody tells of.
class UnknownLayout final : public KeyboardLayout {
public:
    std::string character(std::uint32_t) const override { return {}; }
    base::Signal<>& didChange() override { return m_didChange; }

private:
    base::Signal<> m_didChange;
};

} // namespace korvex::app
