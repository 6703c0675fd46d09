// The state and options of one parse, shared by the text parser and the MessagePack reader.
#pragma once

#include <cstdint>
#include <string>

/// One parse's position, line count, error text and options. Reusable: every ReadFromString
/// resets the position, line, error and result flags and keeps the option flags.
struct ParserContext {
    uint64_t fPos = 0;        ///< index of the next byte to read
    uint64_t fLine = 0;       ///< line breaks consumed so far (0 on the first line)
    uint64_t fLineStart = 0;  ///< index of the first byte after the last line break
    std::string fError;       ///< the first error's fixed message; empty while none
    bool fStrictKeys = false;    ///< a member an object cannot take fails with "duplicate key"
    bool fAcceptMsgPack = false; ///< text starting with a MessagePack map/array marker is binary
    bool fKeepOrder = false;     ///< objects created keep insertion order
    bool fTrustUTF8 = false;     ///< no UTF-8 checks at all
    bool fComplete = false;      ///< set when a whole document was read
    bool fCheckUTF8 = false;     ///< check the whole input once before parsing
    bool fInputIsUTF8 = false;   ///< result of that check; skips per-string checks
    /// The standard profile, for tools that must not change what a document means (never set
    /// by the module): surrogate pairs decode by the standard formula, and every real keeps its
    /// text (none is converted while reading, so none is refused as out of range).
    bool fStandard = false;

    /// Resets position, line, error and the result flags; keeps the options.
    void Reset() {
        fPos = 0;
        fLine = 0;
        fLineStart = 0;
        fError.clear();
        fComplete = false;
        fInputIsUTF8 = false;
    }
    /// The context a parse makes for itself when the caller gives none.
    static ParserContext Private() {
        ParserContext ctx;
        ctx.fCheckUTF8 = true;
        return ctx;
    }
};
