#include "RandomDocument.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string_view>

namespace korvex::backup {

namespace {

using namespace std::string_view_literals;

/// What goes wrong first when texts are taken apart and put together again.
constexpr std::array kPieces{
    "milk"sv,       "\""sv,         "\\"sv,
    "/"sv,          "\n"sv,         "\r\t\b\f"sv,
    "\0"sv,         "\x1f"sv,       "\x7f"sv,
    "\\u0041"sv,    "ü"sv,          "\u2028"sv,
    "世界"sv,       "\uFFFD"sv,     "\uFEFF"sv,
    "\U0001F600"sv, "\U0010FFFF"sv, "e\u0301"sv,
    "{}[]"sv,       " "sv,          "eight or more plain characters"sv,
};

using Doubles = std::numeric_limits<double>;
constexpr std::array kDoubles{0.0,
                              -0.0,
                              1.0,
                              -1.5,
                              0.1,
                              800000000.123456,
                              -63114076800.0,
                              63113904000.0,
                              1e15,
                              1e16,
                              1e22,
                              -1e300,
                              9007199254740993.0,
                              Doubles::max(),
                              Doubles::lowest(),
                              Doubles::min(),
                              Doubles::denorm_min(),
                              Doubles::epsilon()};

using Integers = std::numeric_limits<std::int64_t>;
constexpr std::array<std::int64_t, 7> kIntegers{
    0, 1, -1, 7, 20250310, Integers::max(), Integers::min()};

} // namespace

std::size_t RandomDocument::below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random);
}

base::Uuid RandomDocument::identifier() {
    base::Uuid id;
    for (auto& byte : id.bytes) {
        byte = static_cast<std::uint8_t>(m_random());
    }
    return id;
}

std::string RandomDocument::text() {
    std::string text;
    for (auto left = below(oneIn(50) ? 5000 : 8); left > 0; --left) {
        text += kPieces[below(kPieces.size())];
    }
    return text;
}

base::Bytes RandomDocument::bytes() {
    base::Bytes bytes(below(oneIn(50) ? 100'000 : 40));
    for (auto& byte : bytes) {
        byte = static_cast<std::uint8_t>(m_random());
    }
    return bytes;
}

base::Instant RandomDocument::instant() {
    if (oneIn(2)) {
        return {kDoubles[below(kDoubles.size())]};
    }
    const auto any = std::bit_cast<double>(m_random());
    return {std::isfinite(any) ? any : 0.0};
}

std::int64_t RandomDocument::integer() {
    return oneIn(2) ? kIntegers[below(kIntegers.size())] : static_cast<std::int64_t>(m_random());
}

template <typename Value>
std::optional<Value> RandomDocument::maybe(Value (RandomDocument::*make)()) {
    return oneIn(2) ? std::optional((this->*make)()) : std::nullopt;
}

BackupDocument RandomDocument::next() {
    using Self = RandomDocument;
    BackupDocument document{integer(), instant(), text(), {}, {}};
    for (auto left = below(4); left > 0; --left) {
        document.boards.push_back({.id = identifier(),
                                   .name = text(),
                                   .createdAt = instant(),
                                   .updatedAt = instant(),
                                   .sortOrder = integer(),
                                   .isSystem = boolean(),
                                   .systemIdentifier = maybe(&Self::text),
                                   .icon = maybe(&Self::text),
                                   .iconColor = maybe(&Self::text),
                                   .isArchived = maybe(&Self::boolean)});
    }
    for (auto left = below(oneIn(10) ? 1000 : 6); left > 0; --left) {
        document.entries.push_back({.id = identifier(),
                                    .boardID = identifier(),
                                    .type = text(),
                                    .content = text(),
                                    .richTextData = maybe(&Self::bytes),
                                    .createdAt = instant(),
                                    .updatedAt = instant(),
                                    .sortOrder = integer(),
                                    .isCompleted = boolean(),
                                    .completedAt = maybe(&Self::instant),
                                    .dueDay = maybe(&Self::integer),
                                    .dueDate = maybe(&Self::instant),
                                    .dueStartDate = maybe(&Self::instant),
                                    .reminderDate = maybe(&Self::instant),
                                    .attachmentData = maybe(&Self::bytes)});
    }
    return document;
}

} // namespace korvex::backup
