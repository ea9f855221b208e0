#pragma once

#include "base/Log.h"

namespace korvex::tests {

/// For programs whose work is expected to be refused now and then.
class SilentLog final : public base::LogSink {
public:
    void write(base::LogLevel, std::string_view, std::string_view) override {}
};

} // namespace korvex::tests
