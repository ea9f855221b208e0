#include "richtext/rtf/RtfCodePages.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <utility>

namespace korvex::richtext::rtf {

namespace {

constexpr std::int32_t kWestern = 1252;
constexpr std::int32_t kUtf8 = 65001;
constexpr char16_t kReplacement = u'\uFFFD';

bool isDoubleByte(std::int32_t codePage) {
    constexpr std::array kDoubleByte{932, 936, 949, 950, 1361};
    return std::find(kDoubleByte.begin(), kDoubleByte.end(), codePage) != kDoubleByte.end();
}

bool isKnown(std::int32_t codePage) {
    constexpr std::array kKnown{437,  850,  852,  866,  874,  932,  936,  949,  950,   1250, 1251,
                                1252, 1253, 1254, 1255, 1256, 1257, 1258, 1361, 10000, kUtf8};
    return std::find(kKnown.begin(), kKnown.end(), codePage) != kKnown.end();
}

std::string converterName(std::int32_t codePage) {
    constexpr std::array kNamed{
        std::pair{10000, "macintosh"}, std::pair{437, "ibm-437"}, std::pair{850, "ibm-850"},
        std::pair{852, "ibm-852"},     std::pair{866, "ibm-866"}, std::pair{1361, "ibm-1363"},
        std::pair{kUtf8, "UTF-8"},
    };
    const auto* const named = std::find_if(
        kNamed.begin(), kNamed.end(), [&](const auto& entry) { return entry.first == codePage; });
    return named != kNamed.end() ? named->second : "windows-" + std::to_string(codePage);
}

} // namespace

std::int32_t codePageOf(std::int32_t charset, std::int32_t fallback) {
    constexpr std::array kPages{
        std::pair{0, kWestern}, std::pair{2, kWestern}, std::pair{77, 10000}, std::pair{128, 932},
        std::pair{129, 949},    std::pair{130, 1361},   std::pair{134, 936},  std::pair{136, 950},
        std::pair{161, 1253},   std::pair{162, 1254},   std::pair{163, 1258}, std::pair{177, 1255},
        std::pair{178, 1256},   std::pair{186, 1257},   std::pair{204, 1251}, std::pair{222, 874},
        std::pair{238, 1250},   std::pair{254, 437},    std::pair{255, 850},
    };
    const auto* const page = std::find_if(
        kPages.begin(), kPages.end(), [&](const auto& entry) { return entry.first == charset; });
    return page != kPages.end() ? page->second : fallback;
}

void CodePage::Close::operator()(UConverter* converter) const {
    ucnv_close(converter);
}

CodePage::CodePage(std::int32_t number) : m_number(number) {
    auto status = U_ZERO_ERROR;
    m_converter.reset(ucnv_open(converterName(number).c_str(), &status));
    if (U_FAILURE(status)) {
        // The system's conversions can lack some.
        status = U_ZERO_ERROR;
        m_number = kWestern;
        m_converter.reset(ucnv_open(converterName(kWestern).c_str(), &status));
    }
}

CodePage::~CodePage() = default;

std::size_t CodePage::lengthAt(std::uint8_t lead) const {
    if (m_number == kUtf8) {
        constexpr std::uint8_t kTwo = 0xC2;
        constexpr std::uint8_t kThree = 0xE0;
        constexpr std::uint8_t kFour = 0xF0;
        constexpr std::uint8_t kNone = 0xF5;
        if (lead < kTwo || lead >= kNone) {
            return 1;
        }
        return lead < kThree ? 2 : lead < kFour ? 3 : 4;
    }
    if (!isDoubleByte(m_number)) {
        return 1;
    }
    constexpr std::uint8_t kFirstLead = 0x81;
    constexpr std::uint8_t kLastLead = 0xFE;
    // Single half-width katakana stand between the Japanese lead bytes.
    constexpr std::uint8_t kFirstKatakana = 0xA0;
    constexpr std::uint8_t kLastKatakana = 0xDF;
    constexpr std::int32_t kJapanese = 932;
    const auto isLead = lead >= kFirstLead && lead <= kLastLead &&
                        (m_number != kJapanese || lead < kFirstKatakana || lead > kLastKatakana);
    return isLead ? 2 : 1;
}

std::u16string_view CodePage::decode(std::string_view bytes) {
    constexpr std::uint8_t kFirstUpper = 0x80;
    if (bytes.size() > 1) {
        return converted(bytes);
    }
    const auto byte = static_cast<std::uint8_t>(bytes.front());
    if (byte < kFirstUpper) {
        return converted(bytes);
    }
    if (!m_hasUpper) {
        m_hasUpper = true;
        for (std::size_t index = 0; index < m_upper.size(); ++index) {
            const auto upper = static_cast<char>(kFirstUpper + index);
            m_upper[index] = converted({&upper, 1}).front();
        }
    }
    return {&m_upper[byte - kFirstUpper], 1};
}

std::u16string_view CodePage::converted(std::string_view bytes) {
    auto status = U_ZERO_ERROR;
    ucnv_reset(m_converter.get());
    const auto length = ucnv_toUChars(m_converter.get(), m_decoded.data(),
                                      static_cast<std::int32_t>(m_decoded.size()), bytes.data(),
                                      static_cast<std::int32_t>(bytes.size()), &status);
    if (U_FAILURE(status) || length <= 0) {
        m_decoded[0] = kReplacement;
        return {m_decoded.data(), 1};
    }
    return {m_decoded.data(), static_cast<std::size_t>(length)};
}

CodePage& ByteDecoder::page() {
    // A file can name any number, but must not make us look for each.
    const auto number = isKnown(m_number) ? m_number : kWestern;
    auto& page = m_pages[number];
    if (!page) {
        page = std::make_unique<CodePage>(number);
    }
    return *page;
}

} // namespace korvex::richtext::rtf
