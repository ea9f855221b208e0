#pragma once

#include <string_view>

namespace korvex::richtext {

/// The library writes messages, and the engine has no console.
inline constexpr std::string_view kConsoleScript =
    "var console = { log: function() {}, error: function() {} };";

/// What is called. The walk relies on the tree that version 11.12.0 of the library leaves in
/// `_emitter`: to be checked whenever the library is renewed.
inline constexpr std::string_view kHighlightScript = R"js(
function korvexHighlight(code, language) {
    var result = language === "auto"
        ? hljs.highlightAuto(code)
        : hljs.highlight(code, { language: language, ignoreIllegals: true });
    var runs = [];
    var offset = 0;
    function walk(node, scope) {
        if (typeof node === "string") {
            if (scope) {
                runs.push({ location: offset, length: node.length, scope: scope });
            }
            offset += node.length;
            return;
        }
        // What a nested language wraps around itself is no scope.
        var own = node.scope && !node.scope.startsWith("language:") ? node.scope : scope;
        node.children.forEach(function(child) { walk(child, own); });
    }
    walk(result._emitter.rootNode, "");
    return runs;
}

function korvexLanguages() {
    return hljs.listLanguages().map(function(id) {
        return { id: id, name: hljs.getLanguage(id).name || id };
    });
}
)js";

} // namespace korvex::richtext
