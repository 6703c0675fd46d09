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
#include "json/ParserContext.h"

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
JsonAutoRefPtr<JsonValue> NumberFromText(const std::string& text) {
    ParserContext ctx;
    return JsonAutoRefPtr<JsonValue>(JsonValue::ParseNumber(text, ctx));
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
        out = static_cast<const JsonString*>(this)->Get();
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
    case JsonValue::eJsonString: {
        bool trusted = true;
        return new JsonString(static_cast<const JsonString&>(value).Get(), &trusted, nullptr);
    }
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
    std::vector<std::pair<const JsonValue*, JsonValue*>> queue;
    FillShell(value, *root, queue);
    while (!queue.empty()) {
        auto [source, copy] = queue.back();
        queue.pop_back();
        FillShell(*source, *copy, queue);
    }
    return root.Detach();
}

JsonAutoRefPtr<JsonValue> JsonValue::Copy(const JsonValue& value) {
    return JsonAutoRefPtr<JsonValue>(CopyNoARefPtr(value));
}

// MARK: - Teardown

void JsonValue::Destroy(const JsonValue* node) noexcept {
    if (!node->IsContainer()) {
        delete node;
        return;
    }
    // Children whose last reference goes with their parent are collected here instead of being
    // released from inside the parent's destructor, so a deep tree never recurses.
    std::vector<JsonValue*> dying;
    auto drop = [&dying](JsonValue* child) {
        if (!child || !child->ReleaseKeep()) return;
        if (!child->IsContainer()) {
            delete child;
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
        delete container;
        if (dying.empty()) break;
        current = dying.back();
        dying.pop_back();
    }
}

// MARK: - UTF-8

bool JsonValue::IsUTF8(const std::string& s, unsigned long* errorPos) {
    return IsUTF8(std::string_view(s), errorPos);
}

bool JsonValue::IsUTF8(std::string_view s, unsigned long* errorPos) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(s.data());
    const size_t n = s.size();
    size_t i = 0;
    for (;;) {
        // Runs of ASCII are skipped a block at a time; the blocks only find where the
        // byte-by-byte check must look, they never decide alone.
        i = ByteScan::SkipAscii(bytes, i, n);
        if (i >= n) break;
        const unsigned char c = bytes[i];
        size_t follow;
        if ((c & 0xE0) == 0xC0) {
            follow = 1;
        } else if ((c & 0xF0) == 0xE0) {
            follow = 2;
        } else if ((c & 0xF8) == 0xF0) {
            follow = 3;
        } else {
            if (errorPos) *errorPos = i; // a stray continuation byte, or F8-FF
            return false;
        }
        // The last byte of the sequence must lie inside the string.
        bool ok = i + follow < n;
        for (size_t k = 1; ok && k <= follow; ++k) ok = (bytes[i + k] & 0xC0) == 0x80;
        if (!ok) {
            if (errorPos) *errorPos = i;
            return false;
        }
        i += follow + 1;
    }
    if (errorPos) *errorPos = n;
    return true;
}
