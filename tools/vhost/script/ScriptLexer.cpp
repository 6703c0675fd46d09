// ScriptLexer: the scanner and the decoding of string and number literals.
#include "tools/vhost/script/ScriptLexer.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace vhost {

namespace {

bool IsNameStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}

bool IsNameChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Deliberate: each \uXXXX is one code unit written as UTF-8 on its own, so a surrogate
// becomes three bytes and a pair is never joined; scripts use this to build the byte
// sequences a JSON reader must handle.
void AppendCodeUnit(std::string& out, unsigned int unit) {
    if (unit < 0x80) {
        out += static_cast<char>(unit);
    } else if (unit < 0x800) {
        out += static_cast<char>(0xC0 | (unit >> 6));
        out += static_cast<char>(0x80 | (unit & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (unit >> 12));
        out += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (unit & 0x3F));
    }
}

// number := [ "-" ] int [ frac ] [ exp ]; int := "0" | digit1-9 *digit;
// frac := "." 1*digit; exp := ("e" | "E") [ "+" | "-" ] 1*digit
bool IsJsonNumber(std::string_view text) {
    size_t i = 0;
    auto digits = [&] {
        const size_t start = i;
        while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])))
            ++i;
        return i > start;
    };
    if (i < text.size() && text[i] == '-') ++i;
    if (i < text.size() && text[i] == '0')
        ++i;
    else if (!digits())
        return false;
    if (i < text.size() && text[i] == '.') {
        ++i;
        if (!digits()) return false;
    }
    if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        if (!digits()) return false;
    }
    return i == text.size();
}

class Lexer {
public:
    Lexer(std::string_view text, unsigned int firstLine, std::vector<Token>& out,
          SyntaxError& error)
        : fText(text), fLine(firstLine), fOut(out), fError(error) {}

    bool Run() {
        while (fPos < fText.size()) {
            const char c = fText[fPos];
            if (c == '\n') {
                Add(ETokenKind::eEnd);
                ++fPos;
                ++fLine;
            } else if (c == ' ' || c == '\t' || c == '\r') {
                ++fPos;
            } else if (c == '#') {
                while (fPos < fText.size() && fText[fPos] != '\n')
                    ++fPos;
            } else if (c == ';') {
                Add(ETokenKind::eEnd);
                ++fPos;
            } else if (!ScanToken(c)) {
                return false;
            }
        }
        Add(ETokenKind::eEnd);
        Add(ETokenKind::eEndOfText);
        return true;
    }

private:
    bool ScanToken(char c) {
        switch (c) {
        case '(':
            return Single(ETokenKind::eLeftParen);
        case ')':
            return Single(ETokenKind::eRightParen);
        case '[':
            return Single(ETokenKind::eLeftBracket);
        case ']':
            return Single(ETokenKind::eRightBracket);
        case ',':
            return Single(ETokenKind::eComma);
        case '=':
            return Single(ETokenKind::eEquals);
        case '"':
            return ScanString();
        case '\'':
            return ScanRawString();
        default:
            break;
        }
        if (IsNameStart(c)) return ScanName();
        if (c == '-' || std::isdigit(static_cast<unsigned char>(c))) return ScanNumber();
        if (std::isprint(static_cast<unsigned char>(c)))
            return Fail(std::string("unexpected character '") + c + "'");
        return Fail("unexpected byte " + std::to_string(static_cast<unsigned char>(c)));
    }

    bool Single(ETokenKind kind) {
        Add(kind);
        ++fPos;
        return true;
    }

    // name := identifier { "." identifier }
    bool ScanName() {
        const size_t start = fPos;
        for (;;) {
            while (fPos < fText.size() && IsNameChar(fText[fPos]))
                ++fPos;
            if (fPos + 1 < fText.size() && fText[fPos] == '.' && IsNameStart(fText[fPos + 1])) {
                ++fPos;
                continue;
            }
            break;
        }
        if (fPos < fText.size() && fText[fPos] == '.')
            return Fail("bad name '" + std::string(fText.substr(start, fPos + 1 - start)) + "'");
        Add(ETokenKind::eName).fText = fText.substr(start, fPos - start);
        return true;
    }

    // A number runs over digits, letters, dots and the sign of an exponent; the run must be
    // a JSON number as a whole, so "01" and "1.e5" are errors rather than two tokens.
    bool ScanNumber() {
        const size_t start = fPos++;
        while (fPos < fText.size()) {
            const char c = fText[fPos];
            const char previous = fText[fPos - 1];
            if (IsNameChar(c) || c == '.' ||
                ((c == '+' || c == '-') && (previous == 'e' || previous == 'E')))
                ++fPos;
            else
                break;
        }
        const std::string_view text = fText.substr(start, fPos - start);
        if (text == "-inf") {
            Add(ETokenKind::eNumber).fNumber = -std::numeric_limits<double>::infinity();
            return true;
        }
        if (!IsJsonNumber(text)) return Fail("bad number '" + std::string(text) + "'");
        // from_chars refuses values beyond the double range; strtod then gives what a JSON
        // reader would (+-inf on overflow, 0 or a subnormal on underflow).
        double number = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        if (result.ec == std::errc::result_out_of_range)
            number = std::strtod(std::string(text).c_str(), nullptr);
        Add(ETokenKind::eNumber).fNumber = number;
        return true;
    }

    // string := '"' { char | escape } '"'
    bool ScanString() {
        std::string bytes;
        ++fPos;
        while (fPos < fText.size() && fText[fPos] != '"' && fText[fPos] != '\n') {
            const char c = fText[fPos++];
            if (c != '\\') {
                bytes += c;
                continue;
            }
            if (fPos >= fText.size()) break;
            const char e = fText[fPos++];
            switch (e) {
            case '"':
                bytes += '"';
                break;
            case '\\':
                bytes += '\\';
                break;
            case '/':
                bytes += '/';
                break;
            case 'b':
                bytes += '\b';
                break;
            case 'f':
                bytes += '\f';
                break;
            case 'n':
                bytes += '\n';
                break;
            case 'r':
                bytes += '\r';
                break;
            case 't':
                bytes += '\t';
                break;
            case 'u': {
                unsigned int unit = 0;
                if (!ReadHex(4, unit)) return Fail("\\u needs four hex digits");
                AppendCodeUnit(bytes, unit);
                break;
            }
            case 'x': {
                unsigned int byte = 0;
                if (!ReadHex(2, byte)) return Fail("\\x needs two hex digits");
                bytes += static_cast<char>(byte);
                break;
            }
            default:
                if (e == '\n') return Fail("unterminated string");
                return Fail(std::string("unknown escape \\") + e);
            }
        }
        if (fPos >= fText.size() || fText[fPos] != '"') return Fail("unterminated string");
        ++fPos;
        Add(ETokenKind::eString).fText = std::move(bytes);
        return true;
    }

    // raw := "'" { any byte but "'" and line break } "'"
    bool ScanRawString() {
        const size_t start = ++fPos;
        while (fPos < fText.size() && fText[fPos] != '\'' && fText[fPos] != '\n')
            ++fPos;
        if (fPos >= fText.size() || fText[fPos] != '\'') return Fail("unterminated string");
        Add(ETokenKind::eString).fText = fText.substr(start, fPos - start);
        ++fPos;
        return true;
    }

    bool ReadHex(int count, unsigned int& out) {
        out = 0;
        for (int i = 0; i < count; ++i) {
            const int digit = fPos < fText.size() ? HexValue(fText[fPos]) : -1;
            if (digit < 0) return false;
            out = out * 16 + static_cast<unsigned int>(digit);
            ++fPos;
        }
        return true;
    }

    Token& Add(ETokenKind kind) {
        Token token;
        token.fKind = kind;
        token.fLine = fLine;
        fOut.push_back(std::move(token));
        return fOut.back();
    }

    bool Fail(std::string message) {
        fError = SyntaxError{fLine, std::move(message)};
        return false;
    }

    std::string_view fText;
    size_t fPos = 0;
    unsigned int fLine;
    std::vector<Token>& fOut;
    SyntaxError& fError;
};

} // namespace

bool TokenizeScript(std::string_view text, unsigned int firstLine, std::vector<Token>& out,
                    SyntaxError& error) {
    out.clear();
    return Lexer(text, firstLine, out, error).Run();
}

} // namespace vhost
