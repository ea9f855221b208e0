#pragma once

#include <stdlib.h>

#include <optional>
#include <string>
#include <utility>

namespace korvex::tests {

/// Sets an environment variable, or takes it away, until the end of the scope.
class ScopedEnvironment {
public:
    ScopedEnvironment(std::string name, const std::optional<std::string>& value)
        : m_name(std::move(name)) {
        if (const char* before = ::getenv(m_name.c_str())) {
            m_before = before;
        }
        set(value);
    }
    ~ScopedEnvironment() { set(m_before); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    void set(const std::optional<std::string>& value) const {
        if (value) {
            ::setenv(m_name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(m_name.c_str());
        }
    }

    std::string m_name;
    std::optional<std::string> m_before;
};

} // namespace korvex::tests
