#include "app/Links.h"

#include "base/HexDigit.h"

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

/// Without the escapes of a URL; empty where one is broken.
std::string decoded(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        const auto high = i + 2 < text.size() ? base::hexDigit(text[i + 1]) : -1;
        const auto low = i + 2 < text.size() ? base::hexDigit(text[i + 2]) : -1;
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

std::string urlUnder(std::string_view host, const base::Uuid& id) {
    return std::string(kScheme).append(kAuthority).append(host).append("/").append(id.text());
}

} // namespace

std::optional<base::Uuid> boardID(std::string_view url) {
    const auto link = Link::parse(url);
    return link && link->kind == Link::Kind::board ? std::optional(link->id) : std::nullopt;
}

std::string boardUrl(const base::Uuid& board) {
    return urlUnder(kBoard, board);
}

std::string entryUrl(const base::Uuid& entry) {
    return urlUnder(kEntry, entry);
}

std::optional<Link> Link::parse(std::string_view url) {
    const auto parts = partsOf(url);
    if (!parts || (parts->host != kBoard && parts->host != kEntry)) {
        return std::nullopt;
    }
    const auto isBoard = parts->host == kBoard;
    if (const auto id = base::Uuid::parse(parts->name)) {
        return Link{.kind = isBoard ? Kind::board : Kind::entry, .id = *id};
    }
    return isBoard && parts->name == kInbox ? std::optional<Link>(Link{.kind = Kind::inbox})
                                            : std::nullopt;
}

bool hasOurScheme(std::string_view url) {
    return url.starts_with(kScheme);
}

} // namespace korvex::app
