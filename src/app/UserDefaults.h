#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/Bytes.h"
#include "base/Signal.h"

namespace korvex::app {

/// The user's settings, by key. Main thread. What is set holds at once and is kept; where it cannot
/// be, it holds until the program ends or another one sets the same, and is never an error.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// Whether the key holds anything, of whatever type.
    virtual bool contains(std::string_view key) const = 0;
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

    /// Gives the key what is wanted, or takes it away, if it holds what is expected: a string, or
    /// nothing that is one. Whether it does is found out when nobody else can set it.
    virtual void replaceString(std::string_view key, const std::optional<std::string>& expected,
                               const std::optional<std::string>& wanted) = 0;

    /// The string that the key holds if it is an acceptable one, else `otherwise`, which it holds
    /// from then on. Of several programs that ask at once all get the same.
    virtual std::string settle(std::string_view key,
                               const std::function<bool(std::string_view)>& isAcceptable,
                               std::string_view otherwise) = 0;

    /// Takes in what other programs have set since.
    virtual void refresh() = 0;

    /// The same settings for another thread, which knows of them what is kept.
    virtual std::unique_ptr<UserDefaults> forAnotherThread() const = 0;

    /// The key changes with many a step of the user: what it is given may be kept a moment later.
    virtual void mayWait(std::string_view key) = 0;
    /// False while something that was set cannot be kept.
    virtual bool isKept() const = 0;
    /// Emitted when that is different.
    virtual base::Signal<>& keptChanged() = 0;
};

} // namespace korvex::app
