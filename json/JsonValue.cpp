// JsonValue: type names, conversions, deep copy, iterative teardown, UTF-8 check.
//
// Deliberate behaviours kept here:
// - GetAsBool of a string is true for any non-empty text ("false", "0" and "null" included).
// - GetAsInteger of a real accepts [-2^63, 2^63] (the upper bound is 2^63 itself, as the
//   bounds are compared as doubles); 2^63 itself saturates to the largest signed value.
// - IsUTF8 is structural only: overlong forms, encoded surrogates and lead bytes up to F7 pass.
#include "json/JsonValue.h"

#include "json/ByteScan.h"
#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"
#include "json/ParseHelpers.h"
#include "json/ParserContext.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <vector>

const std::string JsonValue::fTypeStrings[9] = {
    "String", "Integer", "Real", "Object", "CompiledObject", "Array", "True", "False", "Null",
};

JsonValue* JsonValue::GetSubNode(const std::string&) const {
    return nullptr;
}

void PrintCounter() {
    std::cout << "*** Object counters not activated" << std::endl;
}

// MARK: - Conversions

namespace {

// Reads a string's text by the parser's number rule from position 0; null when it is no number.
// The text is a string node's, so a zero byte follows it.
JsonAutoRefPtr<JsonValue> NumberFromText(std::string_view text) {
    ParserContext ctx;
    return JsonAutoRefPtr<JsonValue>(ReadNumber(text.data(), text.size(), ctx));
}

bool RealToInteger(double v, long long& out) {
    // The bounds are compared as doubles, so the upper one is 2^63 itself; NaN fails both.
    constexpr double kLow = static_cast<double>(JsonInteger::sMinInt64);
    constexpr double kHigh = static_cast<double>(JsonInteger::sMaxInt64);
    if (!(v >= kLow && v <= kHigh)) {
        out = 0;
        return false;
    }
    // 2^63 passes the test but has no signed 64-bit form; it saturates.
    out = v >= kHigh ? JsonInteger::sMaxInt64 : static_cast<long long>(v);
    return true;
}

} // namespace

bool JsonValue::GetAsString(std::string& out) const {
    if (fType == eJsonString) {
        out.assign(static_cast<const JsonString*>(this)->Get());
        return true;
    }
    out.clear();
    AppendToString(out);
    return true;
}

std::string JsonValue::GetAsString() const {
    std::string out;
    GetAsString(out);
    return out;
}

bool JsonValue::GetAsInteger(long long& out) const {
    switch (fType) {
    case eJsonString: {
        JsonAutoRefPtr<JsonValue> number = NumberFromText(static_cast<const JsonString*>(this)->Get());
        if (number) return number->GetAsInteger(out);
        break;
    }
    case eJsonInteger: {
        const auto* integer = static_cast<const JsonInteger*>(this);
        if (integer->IsUnsigned()) break;
        integer->Get(out);
        return true;
    }
    case eJsonReal:
        return RealToInteger(static_cast<const JsonReal*>(this)->Get(), out);
    case eJsonTrue:
        out = 1;
        return true;
    case eJsonFalse:
        out = 0;
        return true;
    default:
        break;
    }
    out = 0;
    return false;
}

long long JsonValue::GetAsInteger() const {
    long long out = 0;
    GetAsInteger(out);
    return out;
}

bool JsonValue::GetAsReal(double& out) const {
    switch (fType) {
    case eJsonString: {
        JsonAutoRefPtr<JsonValue> number = NumberFromText(static_cast<const JsonString*>(this)->Get());
        if (number) return number->GetAsReal(out);
        break;
    }
    case eJsonInteger: {
        const auto* integer = static_cast<const JsonInteger*>(this);
        out = integer->IsUnsigned() ? static_cast<double>(integer->Bits())
                                    : static_cast<double>(static_cast<long long>(integer->Bits()));
        return true;
    }
    case eJsonReal:
        out = static_cast<const JsonReal*>(this)->Get();
        return true;
    case eJsonTrue:
        out = 1.0;
        return true;
    case eJsonFalse:
        out = 0.0;
        return true;
    default:
        break;
    }
    out = 0.0;
    return false;
}

double JsonValue::GetAsReal() const {
    double out = 0.0;
    GetAsReal(out);
    return out;
}

bool JsonValue::GetAsBool(bool& out) const {
    switch (fType) {
    case eJsonString:
        out = !static_cast<const JsonString*>(this)->Get().empty();
        return true;
    case eJsonInteger: {
        const auto* integer = static_cast<const JsonInteger*>(this);
        out = integer->IsUnsigned() || integer->Bits() != 0;
        return true;
    }
    case eJsonReal:
        out = static_cast<const JsonReal*>(this)->Get() != 0.0; // NaN gives true
        return true;
    case eJsonTrue:
        out = true;
        return true;
    case eJsonFalse:
        out = false;
        return true;
    default:
        out = false;
        return false;
    }
}

bool JsonValue::GetAsBool() const {
    bool out = false;
    GetAsBool(out);
    return out;
}

// MARK: - Copy

namespace {

JsonValue* CopyScalar(const JsonValue& value) {
    switch (value.GetType()) {
    case JsonValue::eJsonString:
        return static_cast<const JsonString&>(value).Clone();
    case JsonValue::eJsonInteger: {
        const auto& integer = static_cast<const JsonInteger&>(value);
        if (integer.IsUnsigned()) return new JsonInteger(integer.Bits(), true);
        return new JsonInteger(static_cast<long long>(integer.Bits()));
    }
    case JsonValue::eJsonReal:
        return new JsonReal(static_cast<const JsonReal&>(value));
    case JsonValue::eJsonTrue:
        return new JsonTrue();
    case JsonValue::eJsonFalse:
        return new JsonFalse();
    default:
        return new JsonNull();
    }
}

// A copy of a container whose child slots are all empty; the caller fills them.
JsonValue* CloneShell(const JsonValue& value) {
    switch (value.GetType()) {
    case JsonValue::eJsonObject:
        return JsonObject::CloneShell(static_cast<const JsonObject&>(value));
    case JsonValue::eJsonArray:
        return JsonArray::CloneShell(static_cast<const JsonArray&>(value));
    default:
        return JsonCompiledObject::CloneShell(static_cast<const JsonCompiledObject&>(value));
    }
}

// Fills the empty child slots of `copy` with copies of `source`'s children. Scalars are copied
// at once; container children get a shell and are queued, so nesting costs no recursion.
// Slots not yet filled stay null, which keeps `copy` safe to free if an allocation throws.
void FillShell(const JsonValue& source, JsonValue& copy,
               std::vector<std::pair<const JsonValue*, JsonValue*>>& queue) {
    auto fill = [&queue](const JsonValue* child, JsonValue*& slot) {
        if (!child) return;
        if (child->IsContainer()) {
            slot = CloneShell(*child);
            queue.emplace_back(child, slot);
        } else {
            slot = CopyScalar(*child);
        }
    };
    switch (source.GetType()) {
    case JsonValue::eJsonObject: {
        const auto& from = static_cast<const JsonObject&>(source).Members();
        auto& to = static_cast<JsonObject&>(copy).MutableMembers();
        // A copied member table iterates in the same order as its source.
        auto in = from.begin();
        for (auto out = to.begin(); out != to.end(); ++out, ++in) fill(in->fValue, out->fValue);
        break;
    }
    case JsonValue::eJsonArray: {
        const auto& from = static_cast<const JsonArray&>(source).Elements();
        auto& to = static_cast<JsonArray&>(copy).MutableElements();
        for (size_t i = 0; i < from.size(); ++i) fill(from[i], to[i]);
        break;
    }
    default: {
        const auto& from = static_cast<const JsonCompiledObject&>(source).Slots();
        auto& to = static_cast<JsonCompiledObject&>(copy).MutableSlots();
        for (size_t i = 0; i < from.size(); ++i) fill(from[i], to[i]);
        break;
    }
    }
}

} // namespace

JsonValue* JsonValue::CopyNoARefPtr(const JsonValue& value) {
    if (value.fType > eJsonFalse) return new JsonNull();
    if (!value.IsContainer()) return CopyScalar(value);

    JsonAutoRefPtr<JsonValue> root(CloneShell(value));
    std::vector<std::pair<const JsonValue*, JsonValue*>> queue{{&value, root.Get()}};
    while (!queue.empty()) {
        auto [source, copy] = queue.back();
        queue.pop_back();
        const size_t first = queue.size();
        FillShell(*source, *copy, queue);
        // The work list is a stack: with a container's own containers reversed, the first is
        // filled next, so the source is read (and the copy written) front to back.
        std::reverse(queue.begin() + static_cast<std::ptrdiff_t>(first), queue.end());
    }
    return root.Detach();
}

JsonAutoRefPtr<JsonValue> JsonValue::Copy(const JsonValue& value) {
    return JsonAutoRefPtr<JsonValue>(CopyNoARefPtr(value));
}

// MARK: - Teardown

namespace {

// Frees a scalar whose last reference is gone. The classes are final, so each delete calls
// its destructor directly: no virtual call per node.
void DeleteScalar(JsonValue* node) noexcept {
    switch (node->GetType()) {
    case JsonValue::eJsonString: delete static_cast<JsonString*>(node); break;
    case JsonValue::eJsonInteger: delete static_cast<JsonInteger*>(node); break;
    case JsonValue::eJsonReal: delete static_cast<JsonReal*>(node); break;
    case JsonValue::eJsonTrue: delete static_cast<JsonTrue*>(node); break;
    case JsonValue::eJsonFalse: delete static_cast<JsonFalse*>(node); break;
    default: delete static_cast<JsonNull*>(node); break;
    }
}

// Frees a container whose children have been handed out.
void DeleteContainer(JsonValue* node) noexcept {
    switch (node->GetType()) {
    case JsonValue::eJsonObject: delete static_cast<JsonObject*>(node); break;
    case JsonValue::eJsonArray: delete static_cast<JsonArray*>(node); break;
    default: delete static_cast<JsonCompiledObject*>(node); break;
    }
}

} // namespace

void JsonValue::Destroy(const JsonValue* node) noexcept {
    if (!node->IsContainer()) {
        DeleteScalar(const_cast<JsonValue*>(node));
        return;
    }
    // Children whose last reference goes with their parent are collected here instead of being
    // released from inside the parent's destructor, so a deep tree never recurses.
    std::vector<JsonValue*> dying;
    auto drop = [&dying](JsonValue* child) noexcept {
        if (!child) return;
        // A count of 1 is the parent's own reference: nobody else can reach the child to take
        // another, so it dies without an atomic read-modify-write.
        if (child->fUseCount.load(std::memory_order_acquire) != 1 && !child->ReleaseKeep()) return;
        if (!child->IsContainer()) {
            DeleteScalar(child);
            return;
        }
        try {
            dying.push_back(child);
        } catch (...) {
            delete child; // out of memory for the work list: fall back to plain destruction
        }
    };
    const JsonValue* current = node;
    for (;;) {
        auto* container = const_cast<JsonValue*>(current);
        const size_t first = dying.size();
        switch (container->fType) {
        case eJsonObject:
            static_cast<JsonObject*>(container)->TakeChildren(drop);
            break;
        case eJsonArray:
            static_cast<JsonArray*>(container)->TakeChildren(drop);
            break;
        default:
            static_cast<JsonCompiledObject*>(container)->TakeChildren(drop);
            break;
        }
        DeleteContainer(container);
        // As in copying: the first container child is freed next, so the tree is read front
        // to back, in the order it was built.
        std::reverse(dying.begin() + static_cast<std::ptrdiff_t>(first), dying.end());
        if (dying.empty()) break;
        current = dying.back();
        dying.pop_back();
    }
}

// MARK: - UTF-8

bool JsonValue::IsUTF8(const std::string& s, unsigned long* errorPos) {
    return IsUTF8(std::string_view(s), errorPos);
}

namespace {

// The continuation bytes each lead byte needs: 1 for 110xxxxx, 2 for 1110xxxx, 3 for
// 11110xxx; 0 for a byte that cannot start a sequence (10xxxxxx, F8-FF). ASCII is never looked
// up.
constexpr auto kFollowing = [] {
    struct Table {
        unsigned char fCount[256] = {};
    } table;
    for (int c = 0xC0; c < 0xE0; ++c) table.fCount[c] = 1;
    for (int c = 0xE0; c < 0xF0; ++c) table.fCount[c] = 2;
    for (int c = 0xF0; c < 0xF8; ++c) table.fCount[c] = 3;
    return table;
}();

// For a sequence read as a little-endian word from its lead byte: the bits that must read
// 10xxxxxx in its continuation bytes, and what they must hold, by continuation count.
constexpr uint32_t kContinuationMask[4] = {0, 0xC000, 0xC0C000, 0xC0C0C000};
constexpr uint32_t kContinuationBits[4] = {0, 0x8000, 0x808000, 0x80808000};

} // namespace

bool JsonValue::IsUTF8(std::string_view s, unsigned long* errorPos) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(s.data());
    const size_t n = s.size();
    size_t i = 0;
    while (i < n) {
        const unsigned char c = bytes[i];
        if (c < 0x80) {
            // Runs of ASCII are skipped a block at a time; the blocks only find where the
            // sequence check must look, they never decide alone.
            i = ByteScan::SkipAscii(bytes, i + 1, n);
            continue;
        }
        // One sequence: its last byte must lie inside the string, and its continuation bytes
        // must be 10xxxxxx (structurally only: overlong forms and surrogates pass).
        const size_t follow = kFollowing.fCount[c];
        bool ok = follow != 0 && i + follow < n;
        if (ok) {
            if (i + 4 <= n) {
                uint32_t word;
                std::memcpy(&word, bytes + i, 4);
                if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap32(word);
                ok = (word & kContinuationMask[follow]) == kContinuationBits[follow];
            } else {
                for (size_t k = 1; ok && k <= follow; ++k) ok = (bytes[i + k] & 0xC0) == 0x80;
            }
        }
        if (!ok) {
            if (errorPos) *errorPos = i; // the lead byte of the first bad sequence
            return false;
        }
        i += follow + 1;
    }
    if (errorPos) *errorPos = n;
    return true;
}
