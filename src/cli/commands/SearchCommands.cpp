#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/SearchText.h"
#include "cli/session/Session.h"

#include "base/Text.h"

namespace korvex::cli {

namespace {

struct SearchOptions {
    std::vector<std::string> words;
};

ExitStatus search(Session& session, const SearchOptions& options) {
    std::string query;
    for (const auto& word : options.words) {
        query += (query.empty() ? "" : " ") + word;
    }
    const base::TextFolding folding;
    auto& context = session.context();
    services::FoldedTexts texts(context, folding);
    services::SearchService service(context, session.boards(), texts);
    const auto results = service.search(query);
    // Where there are many, to read all entries costs less than to ask for one after the other.
    if (results.size() > texts.numberCount() / 4) {
        context.fetch<model::Entry>();
    }
    if (session.wantsJson()) {
        writeResults(session, results);
        return ExitStatus::done;
    }
    const auto terms = services::SearchService::foldedTerms(query, folding);
    printResults(session, results, terms, folding);
    if (results.isEmpty() && session.terminal().isPresent) {
        session.remark(terms.empty()
                           ? "There is no word to search for."
                           : "No results for “" + std::string(base::trimmed(query)) + "”.");
    }
    return ExitStatus::done;
}

} // namespace

void addSearchCommands(CLI::App& program, Action& chosen) {
    const auto searched =
        addCommand(program, "search", "Finds boards and entries by words", chosen, search);
    addTexts(searched.parser, "QUERY", searched.options->words,
             "Words, or parts of words, in any order: what is found has every one of them");
    searched.parser.footer("Case and accents make no difference. Archived boards are searched too, "
                           "and completed todos.");
}

} // namespace korvex::cli
