#pragma once

#include "richtext/code/ScopeCache.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::richtext {

/// Code that waits for its analysis: the newest goes first, and what nobody asks for any more goes
/// away. For one thread at a time.
class HighlightQueue {
public:
    /// More pieces than a screen shows; the oldest give way.
    static constexpr std::size_t kMaximumWaiting = 64;

    struct Request {
        CodeKey key;
        std::u16string code;
        std::uint64_t round = 0;
    };

    bool isEmpty() const { return m_waiting.empty(); }
    /// Asked again, a request is the newest again.
    void ask(CodeKey key, std::u16string_view code);
    /// The queue must not be empty.
    Request takeNewest();
    /// Drops what has not been asked for since the last call.
    void forgetUnwanted();

private:
    /// The newest request comes last.
    std::vector<Request> m_waiting;
    std::uint64_t m_round = 0;
};

} // namespace korvex::richtext
