#pragma once

#include <unistd.h>

#include <utility>

namespace korvex::base {

/// Owns an open file; closed with this object.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes what `open` gave, a failure too.
    explicit FileDescriptor(int number) : m_number(number) {}
    ~FileDescriptor() {
        if (isOpen()) {
            ::close(m_number);
        }
    }
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }

    int get() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number = -1;
};

} // namespace korvex::base
