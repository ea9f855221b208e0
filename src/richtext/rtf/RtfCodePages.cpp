#include "richtext/rtf/RtfCodePages.h"

#include "richtext/rtf/RtfJohab.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <utility>

namespace korvex::richtext::rtf {

struct CodePageEntry {
    std::int32_t number;
    const char* converter;
    /// A character of two bytes begins with one of these; 0 where all have one byte.
    std::uint8_t firstLead = 0;
    std::uint8_t lastLead = 0;
    /// Single bytes that the converter, which is that of the same characters elsewhere, does not
    /// know: the byte, and what it means.
    std::u16string_view singles = {};
};

namespace {

constexpr std::int32_t kWestern = 1252;
constexpr std::int32_t kUtf8 = 65001;
constexpr std::int32_t kJohab = 1361;
constexpr std::int32_t kJapanese = 932;
constexpr std::int32_t kOldJapanese = 10001;
constexpr char16_t kReplacement = u'\uFFFD';
constexpr std::uint8_t kFirstUpper = 0x80;

/// Sorted by number. From 10000 on the pages of old computers, which the dialect's older writers
/// have.
constexpr auto kPages = std::to_array<CodePageEntry>({
    {437, "ibm-437"},
    {720, "ibm-720"},
    {737, "ibm-737"},
    {775, "ibm-775"},
    {819, "iso-8859-1"},
    {850, "ibm-850"},
    {852, "ibm-852"},
    {855, "ibm-855"},
    {857, "ibm-857"},
    {860, "ibm-860"},
    {861, "ibm-861"},
    {862, "ibm-862"},
    {863, "ibm-863"},
    {864, "ibm-864"},
    {865, "ibm-865"},
    {866, "ibm-866"},
    {869, "ibm-869"},
    {874, "windows-874"},
    {kJapanese, "windows-932", 0x81, 0xFC},
    {936, "windows-936", 0x81, 0xFE},
    {949, "windows-949", 0x81, 0xFE},
    {950, "windows-950", 0x81, 0xFE},
    {1250, "windows-1250"},
    {1251, "windows-1251"},
    {kWestern, "windows-1252"},
    {1253, "windows-1253"},
    {1254, "windows-1254"},
    {1255, "windows-1255"},
    {1256, "windows-1256"},
    {1257, "windows-1257"},
    {1258, "windows-1258"},
    {kJohab, "windows-949", 0x84, 0xF9},
    {10000, "macintosh"},
    {kOldJapanese, "windows-932", 0x81, 0xFC,
     u"\u0080\\\u00A0\u00A0\u00FD\u00A9\u00FE\u2122\u00FF\u2026"},
    {10002, "windows-950", 0xA1, 0xFC, u"\u0080\\\u00A0\u00A0\u00FD\u00A9\u00FE\u2122\u00FF\u2026"},
    {10003, "windows-949", 0xA1, 0xFD,
     u"\u0080\u00A0\u0081\u20A9\u0082\u2013\u0083\u00A9\u00FE\u2122\u00FF\u2026"},
    {10006, "x-mac-greek"},
    {10007, "x-mac-cyrillic"},
    {10008, "windows-936", 0xA1, 0xFC,
     u"\u0080\u00FC\u00A0\u00A0\u00FD\u00A9\u00FE\u2122\u00FF\u2026"},
    {10029, "x-mac-ce"},
    {10081, "x-mac-turkish"},
    {kUtf8, "UTF-8"},
});

const CodePageEntry* entryOf(std::int32_t number) {
    const auto* const place = std::lower_bound(
        kPages.begin(), kPages.end(), number,
        [](const CodePageEntry& entry, std::int32_t sought) { return entry.number < sought; });
    return place != kPages.end() && place->number == number ? place : nullptr;
}

/// A file can name any number, but must not make us look for each.
const CodePageEntry& knownEntry(std::int32_t number) {
    const auto* const entry = entryOf(number);
    return entry ? *entry : *entryOf(kWestern);
}

/// Converters give controls and private characters for bytes that mean nothing.
bool isMeaningless(char16_t unit) {
    return unit < u' ' || (unit >= u'\u007F' && unit < u'\u00A0') ||
           (unit >= u'\uE000' && unit <= u'\uF8FF');
}

} // namespace

std::int32_t codePageOf(std::int32_t charset, std::int32_t fallback) {
    constexpr std::array kCharsets{
        std::pair{0, kWestern}, std::pair{2, kWestern}, std::pair{77, 10000},
        std::pair{78, 10001},   std::pair{79, 10003},   std::pair{80, 10008},
        std::pair{81, 10002},   std::pair{82, kJohab},  std::pair{85, 10006},
        std::pair{86, 10081},   std::pair{88, 10029},   std::pair{89, 10007},
        std::pair{128, 932},    std::pair{129, 949},    std::pair{130, kJohab},
        std::pair{134, 936},    std::pair{136, 950},    std::pair{161, 1253},
        std::pair{162, 1254},   std::pair{163, 1258},   std::pair{177, 1255},
        std::pair{178, 1256},   std::pair{186, 1257},   std::pair{204, 1251},
        std::pair{222, 874},    std::pair{238, 1250},   std::pair{254, 437},
        std::pair{255, 850},
    };
    const auto* const page =
        std::find_if(kCharsets.begin(), kCharsets.end(),
                     [&](const auto& entry) { return entry.first == charset; });
    return page != kCharsets.end() ? page->second : fallback;
}

void CodePage::Close::operator()(UConverter* converter) const {
    ucnv_close(converter);
}

CodePage::CodePage(const CodePageEntry& entry) : m_entry(&entry) {
    auto status = U_ZERO_ERROR;
    m_converter.reset(ucnv_open(entry.converter, &status));
    if (U_FAILURE(status)) {
        // The system's conversions can lack some.
        status = U_ZERO_ERROR;
        m_entry = entryOf(kWestern);
        m_converter.reset(ucnv_open(m_entry->converter, &status));
    }
}

CodePage::~CodePage() = default;

std::size_t CodePage::lengthAt(std::uint8_t lead) const {
    if (m_entry->number == kUtf8) {
        constexpr std::uint8_t kTwo = 0xC2;
        constexpr std::uint8_t kThree = 0xE0;
        constexpr std::uint8_t kFour = 0xF0;
        constexpr std::uint8_t kNone = 0xF5;
        if (lead < kTwo || lead >= kNone) {
            return 1;
        }
        return lead < kThree ? 2 : lead < kFour ? 3 : 4;
    }
    // Single half-width katakana stand between the Japanese lead bytes.
    constexpr std::uint8_t kFirstKatakana = 0xA0;
    constexpr std::uint8_t kLastKatakana = 0xDF;
    const auto hasKatakana = m_entry->number == kJapanese || m_entry->number == kOldJapanese;
    const auto isLead = m_entry->firstLead > 0 && lead >= m_entry->firstLead &&
                        lead <= m_entry->lastLead &&
                        !(hasKatakana && lead >= kFirstKatakana && lead <= kLastKatakana);
    return isLead ? 2 : 1;
}

std::u16string_view CodePage::decode(std::string_view bytes) {
    const auto byte = static_cast<std::uint8_t>(bytes.front());
    if (bytes.size() == 1 && byte >= kFirstUpper) {
        if (!m_hasUpper) {
            m_hasUpper = true;
            for (std::size_t index = 0; index < m_upper.size(); ++index) {
                m_upper[index] = upper(static_cast<std::uint8_t>(kFirstUpper + index));
            }
        }
        return {&m_upper[byte - kFirstUpper], 1};
    }
    if (m_entry->number != kJohab || bytes.size() == 1) {
        return converted(bytes);
    }
    const auto korean = koreanOfJohab(byte, static_cast<std::uint8_t>(bytes[1]));
    if (korean.unit == 0) {
        return converted({korean.standard.data(), korean.standard.size()});
    }
    m_decoded[0] = korean.unit;
    return {m_decoded.data(), 1};
}

char16_t CodePage::upper(std::uint8_t byte) {
    for (std::size_t i = 0; i + 1 < m_entry->singles.size(); i += 2) {
        if (m_entry->singles[i] == byte) {
            return m_entry->singles[i + 1];
        }
    }
    const auto single = static_cast<char>(byte);
    return converted({&single, 1}).front();
}

std::u16string_view CodePage::converted(std::string_view bytes) {
    auto status = U_ZERO_ERROR;
    ucnv_reset(m_converter.get());
    const auto length = ucnv_toUChars(m_converter.get(), m_decoded.data(),
                                      static_cast<std::int32_t>(m_decoded.size()), bytes.data(),
                                      static_cast<std::int32_t>(bytes.size()), &status);
    if (U_FAILURE(status) || length <= 0 || isMeaningless(m_decoded[0])) {
        m_decoded[0] = kReplacement;
        return {m_decoded.data(), 1};
    }
    return {m_decoded.data(), static_cast<std::size_t>(length)};
}

CodePage& ByteDecoder::page() {
    const auto& entry = knownEntry(m_number);
    auto& page = m_pages[entry.number];
    if (!page) {
        page = std::make_unique<CodePage>(entry);
    }
    return *page;
}

} // namespace korvex::richtext::rtf
