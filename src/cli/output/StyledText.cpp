#include "cli/output/StyledText.h"

#include "cli/session/Session.h"

namespace korvex::cli {

void printStyled(Session& session, std::string_view style, std::string_view text) {
    auto& output = session.output();
    if (session.terminal().hasColor && !style.empty() && !text.empty()) {
        output.write(style);
        output.write(text);
        output.write(kPlain);
    } else {
        output.write(text);
    }
}

} // namespace korvex::cli
