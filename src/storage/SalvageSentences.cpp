#include "storage/SalvageSentences.h"

#include "base/CountText.h"
#include "model/Board.h"
#include "model/Entry.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <utility>

namespace korvex::storage {

namespace {

using Loss = store::SalvageReport::Loss;

/// So many boards are named, each with what is lost of it.
constexpr std::size_t kNamedBoards = 3;

/// What is lost of one board, or of several.
class LossSentences {
public:
    explicit LossSentences(const store::SalvageReport& salvage)
        : m_atLeast(salvage.mayMissMore ? "at least " : "") {}

    void add(const std::string& where, std::span<const Loss* const> losses) {
        if (losses.empty()) {
            return;
        }
        Loss sum{.type = losses.front()->type};
        for (const auto* const loss : losses) {
            sum.missing += loss->missing;
            sum.altered += loss->altered;
            sum.withoutBytes += loss->withoutBytes;
        }
        const auto count = [&](std::size_t number) {
            return sum.type == &model::Entry::recordType()
                       ? base::countText(number, "entry", "entries")
                       : base::countText(number, "board", "boards");
        };
        if (sum.missing > 0) {
            m_sentences.push_back(where + m_atLeast + count(sum.missing) + " missing.");
        }
        if (sum.altered > 0) {
            m_sentences.push_back(where + count(sum.altered) + " altered, kept as can be read.");
        }
        if (sum.withoutBytes > 0) {
            m_sentences.push_back(where + "attachments of at most " + count(sum.withoutBytes) +
                                  " missing.");
        }
    }
    std::vector<std::string> take() { return std::move(m_sentences); }

private:
    std::string m_atLeast;
    std::vector<std::string> m_sentences;
};

} // namespace

std::vector<std::string> boardNamesOf(const store::SalvageReport& salvage,
                                      store::ModelContext& context) {
    std::vector<std::string> names;
    for (const auto& loss : salvage.losses) {
        const auto* const board = loss.owner ? context.find<model::Board>(*loss.owner) : nullptr;
        names.push_back(board ? board->name() : std::string());
    }
    return names;
}

std::vector<std::string> lossSentences(const store::SalvageReport& salvage,
                                       const std::vector<std::string>& boardNames) {
    std::vector<const Loss*> boards;
    std::vector<std::pair<const Loss*, std::string>> onNamed;
    std::vector<const Loss*> onUnknown;
    for (std::size_t i = 0; i < salvage.losses.size(); ++i) {
        const auto& loss = salvage.losses[i];
        if (loss.type == &model::Board::recordType()) {
            boards.push_back(&loss);
        } else if (boardNames[i].empty()) {
            onUnknown.push_back(&loss);
        } else {
            onNamed.emplace_back(&loss, boardNames[i]);
        }
    }
    std::stable_sort(onNamed.begin(), onNamed.end(), [](const auto& left, const auto& right) {
        return left.first->missing > right.first->missing;
    });
    LossSentences sentences(salvage);
    sentences.add({}, boards);
    std::vector<const Loss*> onOthers;
    for (std::size_t i = 0; i < onNamed.size(); ++i) {
        if (i < kNamedBoards) {
            sentences.add("On " + onNamed[i].second + ": ", std::array{onNamed[i].first});
        } else {
            onOthers.push_back(onNamed[i].first);
        }
    }
    sentences.add("On " + base::countText(onOthers.size(), "other board", "other boards") + ": ",
                  onOthers);
    sentences.add(onUnknown.size() == 1
                      ? "On a board that is not known: "
                      : "On " + base::numberText(onUnknown.size()) + " boards that are not known: ",
                  onUnknown);
    auto all = sentences.take();
    if (salvage.mayMissMore) {
        all.emplace_back("More may be missing than can be told.");
    }
    return all;
}

} // namespace korvex::storage
