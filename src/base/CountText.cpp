#include "base/CountText.h"

namespace korvex::base {

std::string numberText(std::size_t number) {
    auto text = std::to_string(number);
    for (auto at = text.size(); at > 3; at -= 3) {
        text.insert(at - 3, ",");
    }
    return text;
}

std::string countText(std::size_t count, std::string_view one, std::string_view several) {
    return numberText(count) + " " + std::string(count == 1 ? one : several);
}

} // namespace korvex::base
