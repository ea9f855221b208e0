#pragma once

namespace korvex::app {

/// What the desktop says of how windows are to look.
struct SystemAppearance {
    enum class Scheme { unknown, light, dark };
    enum class Contrast { usual, high };
    enum class Motion { usual, still };

    Scheme appearance = Scheme::unknown;
    Contrast contrast = Contrast::usual;
    Motion motion = Motion::usual;

    bool operator==(const SystemAppearance&) const = default;
};

} // namespace korvex::app
