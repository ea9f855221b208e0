#include "app/Links.h"

#include <algorithm>
#include <cstddef>

namespace korvex::app {

namespace {

constexpr std::string_view kScheme = "korvex:";
constexpr std::string_view kAuthority = "//";
constexpr std::string_view kBoard = "board";
constexpr std::string_view kEntry = "entry";
constexpr std::string_view kInbox = "inbox";
/// Ours have a tenth of it.
constexpr std::size_t kLongestUrl = 512;

/// What of a URL leads somewhere: the host, and the one name of its path.
struct Parts {
    std::string_view host;
    std::string name;
};

int digitOf(char digit) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    const auto lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
    const auto found = kDigits.find(lower);
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

/// Without the escapes of a URL; empty where one is broken.
std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        const auto high = i + 2 < text.size() ? digitOf(text[i + 1]) : -1;
        const auto low = i + 2 < text.size() ? digitOf(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            return {};
        }
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}

/// Absent where the path has no name, or more than one.
std::optional<std::string> onlyName(std::string_view path) {
    while (path.starts_with('/')) {
        path.remove_prefix(1);
    }
    while (path.ends_with('/')) {
        path.remove_suffix(1);
    }
    if (path.empty() || path.find('/') != std::string_view::npos) {
        return std::nullopt;
    }
    return decoded(path);
}

std::optional<Parts> partsOf(std::string_view url) {
    if (url.size() > kLongestUrl || !url.starts_with(kScheme)) {
        return std::nullopt;
    }
    url.remove_prefix(kScheme.size());
    if (!url.starts_with(kAuthority)) {
        return std::nullopt;
    }
    url.remove_prefix(kAuthority.size());
    url = url.substr(0, url.find_first_of("?#"));
    const auto pathStart = std::min(url.find('/'), url.size());
    auto name = onlyName(url.substr(pathStart));
    if (!name) {
        return std::nullopt;
    }
    auto host = url.substr(0, pathStart);
    host.remove_prefix(host.find('@') + 1); // a user's name, which means nothing here
    return Parts{.host = host.substr(0, host.find(':')), .name = *std::move(name)};
}

std::optional<base::Uuid> idUnder(std::string_view host, std::string_view url) {
    const auto parts = partsOf(url);
    return parts && parts->host == host ? base::Uuid::parse(parts->name) : std::nullopt;
}

std::string urlUnder(std::string_view host, const base::Uuid& id) {
    return std::string(kScheme).append(kAuthority).append(host).append("/").append(id.text());
}

} // namespace

std::optional<base::Uuid> boardID(std::string_view url) {
    return idUnder(kBoard, url);
}

std::optional<base::Uuid> entryID(std::string_view url) {
    return idUnder(kEntry, url);
}

std::string boardUrl(const base::Uuid& board) {
    return urlUnder(kBoard, board);
}

std::string entryUrl(const base::Uuid& entry) {
    return urlUnder(kEntry, entry);
}

std::optional<Link> Link::parse(std::string_view url) {
    if (const auto board = boardID(url)) {
        return Link{.kind = Kind::board, .id = *board};
    }
    if (const auto entry = entryID(url)) {
        return Link{.kind = Kind::entry, .id = *entry};
    }
    const auto parts = partsOf(url);
    return parts && parts->host == kBoard && parts->name == kInbox
               ? std::optional<Link>(Link{.kind = Kind::inbox})
               : std::nullopt;
}

bool hasOurScheme(std::string_view url) {
    return url.starts_with(kScheme);
}

} // namespace korvex::app
