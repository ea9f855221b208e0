#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Bytes.h"

namespace korvex::app {

/// The user's settings, by key. Main thread. Writes are kept at once; a setting that cannot be
/// written holds until the program ends, and is never an error.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Absent when the key is missing or holds another type.
    virtual std::optional<std::string> string(std::string_view key) const = 0;
    virtual std::optional<std::int64_t> integer(std::string_view key) const = 0;
    /// A whole number is a real one too.
    virtual std::optional<double> real(std::string_view key) const = 0;
    virtual std::optional<bool> boolean(std::string_view key) const = 0;
    virtual std::optional<base::Bytes> bytes(std::string_view key) const = 0;

    virtual void setString(std::string_view key, std::string_view value) = 0;
    virtual void setInteger(std::string_view key, std::int64_t value) = 0;
    /// `value` must be finite.
    virtual void setReal(std::string_view key, double value) = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
    virtual void setBytes(std::string_view key, const base::Bytes& value) = 0;
    virtual void remove(std::string_view key) = 0;

    /// The string that the key holds if it is an acceptable one, else `otherwise`, which it holds
    /// from then on. Of several programs that ask at once all get the same.
    virtual std::string settle(std::string_view key,
                               const std::function<bool(std::string_view)>& isAcceptable,
                               std::string_view otherwise) = 0;

    /// Takes in what other programs have set since.
    virtual void refresh() = 0;

    /// The same settings for another thread, which knows of them what is kept.
    virtual std::unique_ptr<UserDefaults> forAnotherThread() const = 0;
};

} // namespace korvex::app
