// Deep equality with an explicit work list of container pairs.
#include "json/JsonEquality.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <cstring>
#include <vector>

namespace {

using PairList = std::vector<std::pair<const JsonValue*, const JsonValue*>>;

// Children: both missing is equal, one missing is not; scalars are compared at once and
// container pairs queued. One switch on the shared type serves both, as this runs once per node.
[[gnu::always_inline]] inline bool ChildEqual(const JsonValue* a, const JsonValue* b,
                                              PairList& pending) {
    if (!a || !b) return a == b;
    const JsonValue::EJsonValueType type = a->GetType();
    if (type != b->GetType()) return false;
    if (a == b) return true;
    switch (type) {
    case JsonValue::eJsonReal:
        // Get() converts a pending text first; NaN is unequal to itself, 0.0 equals -0.0.
        return static_cast<const JsonReal*>(a)->Get() == static_cast<const JsonReal*>(b)->Get();
    case JsonValue::eJsonString:
        return static_cast<const JsonString*>(a)->Get() == static_cast<const JsonString*>(b)->Get();
    case JsonValue::eJsonInteger: {
        const auto* x = static_cast<const JsonInteger*>(a);
        const auto* y = static_cast<const JsonInteger*>(b);
        return x->Bits() == y->Bits() && x->IsUnsigned() == y->IsUnsigned();
    }
    case JsonValue::eJsonObject:
    case JsonValue::eJsonCompiledObject:
    case JsonValue::eJsonArray:
        pending.emplace_back(a, b);
        return true;
    default:
        return true; // true, false, null
    }
}

bool ContainerEqual(const JsonValue& a, const JsonValue& b, PairList& pending) {
    switch (a.GetType()) {
    case JsonValue::eJsonObject: {
        const auto& x = static_cast<const JsonObject&>(a).Members();
        const auto& y = static_cast<const JsonObject&>(b).Members();
        if (x.Size() != y.Size()) return false;
        // Objects built alike hold their members in the same order: walk both and look a key
        // up only where the two walks disagree.
        auto next = y.begin();
        for (const JsonObject::Member& member : x) {
            const JsonObject::Member* twin = nullptr;
            if (next != y.end() && next->Key() == member.Key()) {
                twin = &*next;
                ++next;
            } else {
                twin = y.Find(member.Key());
                next = y.end(); // the orders differ; stay with lookups
            }
            if (!twin || !ChildEqual(member.fValue, twin->fValue, pending)) return false;
        }
        return true;
    }
    case JsonValue::eJsonArray: {
        const auto& x = static_cast<const JsonArray&>(a).Elements();
        const auto& y = static_cast<const JsonArray&>(b).Elements();
        if (x.size() != y.size()) return false;
        for (size_t i = 0; i < x.size(); ++i)
            if (!ChildEqual(x[i], y[i], pending)) return false;
        return true;
    }
    default: {
        const auto& x = static_cast<const JsonCompiledObject&>(a);
        const auto& y = static_cast<const JsonCompiledObject&>(b);
        if (x.GetContext() != y.GetContext() || x.SlotCount() != y.SlotCount()) return false;
        for (size_t i = 0; i < x.SlotCount(); ++i)
            if (!ChildEqual(x.Slots()[i], y.Slots()[i], pending)) return false;
        return true;
    }
    }
}

} // namespace

bool operator==(const JsonValue& a, const JsonValue& b) {
    PairList pending;
    if (!ChildEqual(&a, &b, pending)) return false;
    while (!pending.empty()) {
        auto [x, y] = pending.back();
        pending.pop_back();
        if (!ContainerEqual(*x, *y, pending)) return false;
    }
    return true;
}
