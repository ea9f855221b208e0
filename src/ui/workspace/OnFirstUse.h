#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace korvex::ui {

/// Something that costs more than a start should pay: made when it is first asked for. Main thread.
template <typename T>
class OnFirstUse {
public:
    explicit OnFirstUse(std::function<std::unique_ptr<T>()> make) : m_make(std::move(make)) {}

    /// Throws what making it throws; then the next call tries again.
    T& get() {
        if (!m_made) {
            m_made = m_make();
        }
        return *m_made;
    }

private:
    std::function<std::unique_ptr<T>()> m_make;
    std::unique_ptr<T> m_made;
};

} // namespace korvex::ui
