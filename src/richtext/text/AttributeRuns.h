#pragma once

#include "richtext/text/Interned.h"
#include "richtext/text/TextRange.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace korvex::richtext {

/// What the parts of a string are like: runs, each up to its end, of values that are kept once.
/// Neighbouring runs have different values. Every operation is linear or better in what it touches.
template <typename T>
class AttributeRuns {
public:
    using Id = typename Interned<T>::Id;

    bool isEmpty() const { return m_runs.empty(); }
    Id idOf(const T& value) { return m_values.idOf(value); }
    /// The value at `offset`; at the end or behind it the last one. Not while there are no runs.
    const T& at(std::size_t offset) const {
        const auto run = runAt(offset);
        return m_values[run == m_runs.end() ? m_runs.back().id : run->id];
    }

    /// Adds a run that reaches to `end`, or lets the last one reach there.
    void extend(std::size_t end, Id id) { extend(m_runs, end, id); }
    /// Lets the last run reach to `end`, whatever it is.
    void stretch(std::size_t end) { m_runs.back().end = end; }
    /// Adds what the other has of a part, which begins at `offset` here.
    void append(const AttributeRuns& other, TextRange range, std::size_t offset) {
        std::unordered_map<Id, Id> ids;
        auto last = kUnknown;
        auto lastHere = kUnknown;
        auto start = range.location;
        for (auto run = other.runAt(start); run != other.m_runs.end() && start < range.end();
             ++run) {
            start = std::min(run->end, range.end());
            if (run->id != last) {
                last = run->id;
                const auto [place, isNew] = ids.try_emplace(run->id, 0);
                if (isNew) {
                    place->second = idOf(other.m_values[run->id]);
                }
                lastHere = place->second;
            }
            extend(offset + start - range.location, lastHere);
        }
    }

    /// Calls `visit(TextRange, const T&)` with each run, in order; the first and the last one are
    /// cut to the range.
    template <typename Visit>
    void visit(TextRange range, Visit&& visit) const {
        auto start = range.location;
        for (auto run = runAt(start); run != m_runs.end() && start < range.end(); ++run) {
            const auto end = std::min(run->end, range.end());
            visit(TextRange{start, end - start}, m_values[run->id]);
            start = end;
        }
    }

    /// `edit` changes each distinct value in the range, once.
    template <typename Edit>
    void rewrite(TextRange range, Edit&& edit) {
        if (range.length == 0) {
            return;
        }
        // Values are interned anew, so that those no longer used are forgotten.
        Interned<T> values;
        std::vector<Id> kept(m_values.size(), kUnknown);
        std::vector<Id> edited(m_values.size(), kUnknown);
        Runs runs;
        runs.reserve(m_runs.size() + 2);
        const auto keep = [&](std::size_t end, Id id) {
            if (kept[id] == kUnknown) {
                kept[id] = values.idOf(m_values[id]);
            }
            extend(runs, end, kept[id]);
        };
        const auto change = [&](std::size_t end, Id id) {
            if (edited[id] == kUnknown) {
                auto value = m_values[id];
                edit(value);
                edited[id] = values.idOf(value);
            }
            extend(runs, end, edited[id]);
        };
        std::size_t start = 0;
        for (const Run& run : m_runs) {
            if (start < range.location) {
                keep(std::min(run.end, range.location), run.id);
            }
            if (run.end > range.location && start < range.end()) {
                change(std::min(run.end, range.end()), run.id);
            }
            if (run.end > range.end()) {
                keep(run.end, run.id);
            }
            start = run.end;
        }
        m_runs = std::move(runs);
        m_values = std::move(values);
    }

    /// Whether the runs end at the same places and `areEqual` holds for their values.
    template <typename Equal>
    bool isEqualTo(const AttributeRuns& other, Equal&& areEqual) const {
        return std::equal(m_runs.begin(), m_runs.end(), other.m_runs.begin(), other.m_runs.end(),
                          [&](const Run& left, const Run& right) {
                              return left.end == right.end &&
                                     areEqual(m_values[left.id], other.m_values[right.id]);
                          });
    }

private:
    struct Run {
        std::size_t end;
        Id id;
    };
    using Runs = std::vector<Run>;
    static constexpr auto kUnknown = static_cast<Id>(-1);

    typename Runs::const_iterator runAt(std::size_t offset) const {
        return std::partition_point(m_runs.begin(), m_runs.end(),
                                    [&](const Run& run) { return run.end <= offset; });
    }
    static void extend(Runs& runs, std::size_t end, Id id) {
        if (!runs.empty() && runs.back().id == id) {
            runs.back().end = end;
        } else if (runs.empty() ? end > 0 : end > runs.back().end) {
            runs.push_back({end, id});
        }
    }

    Runs m_runs;
    Interned<T> m_values;
};

} // namespace korvex::richtext
