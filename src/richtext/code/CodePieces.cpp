#include "richtext/code/CodePieces.h"

namespace korvex::richtext {

std::optional<CodePieces::Place> CodePieces::add(std::u16string_view text,
                                                 std::string_view language) {
    if (language.empty()) {
        m_isOpen = false;
        return std::nullopt;
    }
    if (!m_isOpen || m_pieces.back().language != language) {
        m_pieces.push_back({std::string(language), {}});
        m_isOpen = true;
    }
    auto& code = m_pieces.back().code;
    const Place place{m_pieces.size() - 1, code.size()};
    code += text;
    return place;
}

} // namespace korvex::richtext
