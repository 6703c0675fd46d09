// ScriptParser: the statements of a script as a small syntax tree.
//   statement := [ "let" ] name "=" expr | expr
//   expr      := literal | name | dotted "(" [ list ] ")" | "[" [ list ] "]"
//   list      := expr { "," expr }
#pragma once

#include "tools/vhost/script/ScriptLexer.h"
#include "tools/vhost/script/ScriptValue.h"

#include <string>
#include <string_view>
#include <vector>

namespace vhost {

struct Expr {
    enum class EKind { eLiteral, eVariable, eCall, eVector };
    EKind fKind = EKind::eLiteral;
    ScriptValue fLiteral;     ///< eLiteral
    std::string fName;        ///< eVariable, eCall
    std::vector<Expr> fItems; ///< call arguments, vector elements
    unsigned int fLine = 0;
};

struct Statement {
    std::string fTarget; ///< the variable bound, empty for an expression statement
    Expr fExpr;
    unsigned int fLine = 0;
};

/// Parses a whole text. On the first syntax error returns false with its line and message
/// and leaves `out` unspecified.
bool ParseScript(std::string_view text, unsigned int firstLine, std::vector<Statement>& out,
                 SyntaxError& error);

} // namespace vhost
