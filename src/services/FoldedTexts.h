#pragma once

#include "base/Signal.h"
#include "base/TextFolding.h"
#include "model/Entry.h"
#include "services/TextArena.h"
#include "store/ModelContext.h"

#include <tsl/robin_map.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::services {

/// The folded contents of entries, kept as long as an entry's content stays what it is, and the
/// order of the entries on their boards: all that a search runs through. Follows its context, whose
/// records it does not make for that, and which must outlive it, as `folding` must. Main thread.
class FoldedTexts {
public:
    /// Stands for an entry as long as there is one; then maybe for another.
    using Number = TextArena::Number;

    FoldedTexts(store::ModelContext& context, const base::TextFolding& folding);

    const base::TextFolding& folding() const { return m_folding; }

    /// Valid until the next call of a function that is not const, or the next change of the store.
    std::string_view folded(const model::Entry& entry);

    /// Takes in all entries as the context has them now. Throws StoreError, and then goes on where
    /// it was when called again.
    void update();
    /// Does some of the first `update`'s work; false once nothing is left of it.
    bool prepare(std::chrono::steady_clock::duration atMost);

    /// As of the last `update`: appends the entries whose texts contain all of `terms`, in no
    /// order; the longest term should come first.
    void find(std::span<const base::Needle> terms, std::vector<Number>& to) const {
        m_texts.find(terms, to);
    }
    /// As of the last `update`: the entries of a board, as `services::ordered` has them.
    std::span<const Number> entriesInOrder(const base::Uuid& boardID);
    /// All numbers are below this.
    std::size_t numberCount() const { return m_slots.size(); }
    const base::Uuid& id(Number number) const { return m_slots[number].id; }
    model::Entry* entry(Number number) const {
        return m_context.find<model::Entry>(m_slots[number].id);
    }

private:
    struct Slot {
        base::Uuid id;
        std::int64_t sortOrder = 0;
        base::Instant createdAt;
        /// The hash of the content that the text was folded from.
        std::size_t contentHash = 0;
        std::uint32_t contentLength = 0;
        /// Its place in `m_boards`, or `kNowhere`.
        std::uint32_t board = kNowhere;
        bool isUsed = false;
    };
    struct BoardOrder {
        std::vector<Number> numbers;
        bool isInOrder = true;
    };
    struct Place {
        std::optional<base::Uuid> board;
        std::int64_t sortOrder;
        base::Instant createdAt;
    };
    static constexpr std::uint32_t kNowhere = ~std::uint32_t{0};
    /// The parts that `prepare` works in: the entries by the first byte of their identifiers.
    static constexpr std::size_t kParts = 256;

    void note(const store::ChangeSet& changes);
    void forgetAll();
    void loadParts(std::size_t end);
    void takeIn(const std::vector<base::Uuid>& ids);
    std::vector<base::Uuid> pending() const;
    /// The entries that others have added or deleted and of which no change told.
    std::vector<base::Uuid> unannounced();

    Number numberOf(const base::Uuid& id);
    void setText(Number number, std::string_view content);
    void setPlace(Number number, const Place& place);
    void put(const model::Entry& entry);
    void remove(const base::Uuid& id);
    std::uint32_t boardNumber(const base::Uuid& id);
    void putInOrder(std::uint32_t board);
    bool placeByNumbers(std::vector<Number>& numbers) const;
    bool isOrdered(Number left, Number right) const;

    store::ModelContext& m_context;
    const base::TextFolding& m_folding;
    TextArena m_texts;
    std::vector<Slot> m_slots;
    std::vector<Number> m_freeNumbers;
    tsl::robin_map<base::Uuid, Number> m_numbers;
    std::vector<BoardOrder> m_boards;
    tsl::robin_map<base::Uuid, std::uint32_t> m_boardNumbers;
    /// How many parts are loaded.
    std::size_t m_loadedParts = 0;
    /// The entries that have changed since they were taken in.
    std::vector<base::Uuid> m_stale;
    /// The entries changed here and not saved: they may change again without a word.
    std::vector<base::Uuid> m_pending;
    /// Others have changed the store: they may have deleted entries that are no records here.
    bool m_mayHaveUnannounced = false;
    base::Subscription m_changes;
};

} // namespace korvex::services
