// ScriptLexer: splits script text into tokens. Statements end at a line break or `;`; `#`
// starts a comment outside strings. Literals are decoded here, so the parser sees values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vhost {

enum class ETokenKind {
    eName,   ///< identifier, possibly dotted (JSON.FromString)
    eString, ///< decoded bytes of a "..." or '...' literal
    eNumber, ///< a number literal, including -inf; nan and inf are names
    eLeftParen,
    eRightParen,
    eLeftBracket,
    eRightBracket,
    eComma,
    eEquals,
    eEnd, ///< end of a statement: line break or `;`
    eEndOfText,
};

struct Token {
    ETokenKind fKind = ETokenKind::eEndOfText;
    std::string fText; ///< the name, or the decoded string bytes
    double fNumber = 0;
    unsigned int fLine = 0;
};

struct SyntaxError {
    unsigned int fLine = 0;
    std::string fMessage;
};

/// Tokens of `text`, its first line numbered `firstLine`, ending with eEndOfText. On a bad
/// literal or character returns false with the first error in `error`.
bool TokenizeScript(std::string_view text, unsigned int firstLine, std::vector<Token>& out,
                    SyntaxError& error);

} // namespace vhost
