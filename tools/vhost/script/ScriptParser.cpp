// ScriptParser: recursive descent over the lexer's tokens.
#include "tools/vhost/script/ScriptParser.h"

#include <limits>

namespace vhost {

namespace {

bool IsReserved(const std::string& name) {
    return name == "let" || name == "true" || name == "false" || name == "nan" || name == "inf";
}

std::string Describe(const Token& token) {
    switch (token.fKind) {
    case ETokenKind::eName:
        return "'" + token.fText + "'";
    case ETokenKind::eString:
        return "a string";
    case ETokenKind::eNumber:
        return "a number";
    case ETokenKind::eLeftParen:
        return "'('";
    case ETokenKind::eRightParen:
        return "')'";
    case ETokenKind::eLeftBracket:
        return "'['";
    case ETokenKind::eRightBracket:
        return "']'";
    case ETokenKind::eComma:
        return "','";
    case ETokenKind::eEquals:
        return "'='";
    case ETokenKind::eEnd:
    case ETokenKind::eEndOfText:
        return "the end of the statement";
    }
    return "?";
}

// Parse failures unwind to ParseScript through this exception; it never leaves the file.
struct ParseFailure {
    SyntaxError fError;
};

class Parser {
public:
    explicit Parser(const std::vector<Token>& tokens) : fTokens(tokens) {}

    void Run(std::vector<Statement>& out) {
        while (Peek().fKind != ETokenKind::eEndOfText) {
            if (Peek().fKind == ETokenKind::eEnd) {
                ++fPos;
                continue;
            }
            out.push_back(ParseStatement());
            if (Peek().fKind != ETokenKind::eEnd) Fail("unexpected " + Describe(Peek()));
        }
    }

private:
    Statement ParseStatement() {
        Statement statement;
        statement.fLine = Peek().fLine;
        const bool let = Peek().fKind == ETokenKind::eName && Peek().fText == "let";
        const size_t nameAt = fPos + (let ? 1 : 0);
        if (let ||
            (Peek().fKind == ETokenKind::eName && At(fPos + 1).fKind == ETokenKind::eEquals)) {
            const Token& name = At(nameAt);
            if (name.fKind != ETokenKind::eName || name.fText.find('.') != std::string::npos ||
                IsReserved(name.fText))
                Fail("expected a variable name, found " + Describe(name));
            if (At(nameAt + 1).fKind != ETokenKind::eEquals)
                Fail("expected '=' after " + name.fText);
            statement.fTarget = name.fText;
            fPos = nameAt + 2;
        }
        statement.fExpr = ParseExpr();
        return statement;
    }

    Expr ParseExpr() {
        // Deep nesting would exhaust the stack; no sensible script comes near this.
        constexpr int sMaxDepth = 200;
        if (fDepth >= sMaxDepth) Fail("expression nested too deeply");
        ++fDepth;
        Expr expr = ParseValue();
        --fDepth;
        return expr;
    }

    Expr ParseValue() {
        const Token& token = Peek();
        Expr expr;
        expr.fLine = token.fLine;
        switch (token.fKind) {
        case ETokenKind::eString:
            expr.fLiteral = ScriptValue::String(token.fText);
            ++fPos;
            return expr;
        case ETokenKind::eNumber:
            expr.fLiteral = ScriptValue::Number(token.fNumber);
            ++fPos;
            return expr;
        case ETokenKind::eLeftBracket:
            expr.fKind = Expr::EKind::eVector;
            ++fPos;
            ParseList(ETokenKind::eRightBracket, "']'", expr.fItems);
            return expr;
        case ETokenKind::eName:
            return ParseNamed();
        default:
            Fail("expected a value, found " + Describe(token));
        }
        return expr;
    }

    Expr ParseNamed() {
        const Token& token = Peek();
        Expr expr;
        expr.fLine = token.fLine;
        ++fPos;
        if (Peek().fKind == ETokenKind::eLeftParen) {
            expr.fKind = Expr::EKind::eCall;
            expr.fName = token.fText;
            ++fPos;
            ParseList(ETokenKind::eRightParen, "')'", expr.fItems);
            return expr;
        }
        constexpr double sInfinity = std::numeric_limits<double>::infinity();
        if (token.fText == "true" || token.fText == "false")
            expr.fLiteral = ScriptValue::Boolean(token.fText == "true");
        else if (token.fText == "nan")
            expr.fLiteral = ScriptValue::Number(std::numeric_limits<double>::quiet_NaN());
        else if (token.fText == "inf")
            expr.fLiteral = ScriptValue::Number(sInfinity);
        else if (token.fText.find('.') != std::string::npos || token.fText == "let")
            Fail("expected '(' after " + token.fText);
        else {
            expr.fKind = Expr::EKind::eVariable;
            expr.fName = token.fText;
        }
        return expr;
    }

    // list := [ expr { "," expr } ] close; the opening token is already consumed.
    void ParseList(ETokenKind close, const char* closeText, std::vector<Expr>& items) {
        if (Peek().fKind == close) {
            ++fPos;
            return;
        }
        for (;;) {
            items.push_back(ParseExpr());
            if (Peek().fKind == close) {
                ++fPos;
                return;
            }
            if (Peek().fKind != ETokenKind::eComma)
                Fail(std::string("expected ',' or ") + closeText + ", found " + Describe(Peek()));
            ++fPos;
        }
    }

    const Token& Peek() const { return At(fPos); }
    const Token& At(size_t index) const {
        return index < fTokens.size() ? fTokens[index] : fTokens.back();
    }

    [[noreturn]] void Fail(std::string message) const {
        throw ParseFailure{SyntaxError{Peek().fLine, std::move(message)}};
    }

    const std::vector<Token>& fTokens;
    size_t fPos = 0;
    int fDepth = 0;
};

} // namespace

bool ParseScript(std::string_view text, unsigned int firstLine, std::vector<Statement>& out,
                 SyntaxError& error) {
    out.clear();
    std::vector<Token> tokens;
    if (!TokenizeScript(text, firstLine, tokens, error)) return false;
    try {
        Parser(tokens).Run(out);
    } catch (const ParseFailure& failure) {
        error = failure.fError;
        return false;
    }
    return true;
}

} // namespace vhost
