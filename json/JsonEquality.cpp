// Deep equality, depth first with an explicit stack of open container pairs.
#include "json/JsonEquality.h"

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"
#include "json/JsonScalar.h"

#include <cstring>
#include <vector>

namespace {

enum class EVerdict { kUnequal, kEqual, kDescend };

// Two children: both missing is equal, one missing is not; scalars are compared at once, and a
// container pair is descended into. One switch on the shared type serves both, as this runs
// once per node.
[[gnu::always_inline]] inline EVerdict Compare(const JsonValue* a, const JsonValue* b) {
    if (!a || !b) return a == b ? EVerdict::kEqual : EVerdict::kUnequal;
    const JsonValue::EJsonValueType type = a->GetType();
    if (type != b->GetType()) return EVerdict::kUnequal;
    if (a == b) return EVerdict::kEqual;
    bool equal = true; // true, false, null
    switch (type) {
    case JsonValue::eJsonReal:
        // Get() converts a pending text first; NaN is unequal to itself, 0.0 equals -0.0.
        equal = static_cast<const JsonReal*>(a)->Get() == static_cast<const JsonReal*>(b)->Get();
        break;
    case JsonValue::eJsonString:
        equal = static_cast<const JsonString*>(a)->Get() ==
                static_cast<const JsonString*>(b)->Get();
        break;
    case JsonValue::eJsonInteger: {
        const auto* x = static_cast<const JsonInteger*>(a);
        const auto* y = static_cast<const JsonInteger*>(b);
        equal = x->Bits() == y->Bits() && x->IsUnsigned() == y->IsUnsigned();
        break;
    }
    case JsonValue::eJsonObject:
    case JsonValue::eJsonCompiledObject:
    case JsonValue::eJsonArray:
        return EVerdict::kDescend;
    default:
        break;
    }
    return equal ? EVerdict::kEqual : EVerdict::kUnequal;
}

using MemberIterator = JsonObject::MemberTable::const_iterator;

// A container pair being compared, child by child, in the first one's order. Children are
// visited depth first in that order, which is the order a parse lays nodes out in memory: the
// walk reads two parsed trees front to back once.
struct Frame {
    Frame(const JsonValue* a, const JsonValue* b) noexcept : fA(a), fB(b) {}

    const JsonValue* fA;
    const JsonValue* fB;
    size_t fIndex = 0;      ///< arrays and compiled objects: the next child
    MemberIterator fMember; ///< objects: the next member of fA
    MemberIterator fTwin;   ///< objects: fB's member in step with it, while the orders agree

    // False when the two cannot be equal whatever their children are.
    bool Open() {
        switch (fA->GetType()) {
        case JsonValue::eJsonObject: {
            const auto& x = static_cast<const JsonObject*>(fA)->Members();
            const auto& y = static_cast<const JsonObject*>(fB)->Members();
            fMember = x.begin();
            fTwin = y.begin();
            return x.Size() == y.Size();
        }
        case JsonValue::eJsonArray:
            return static_cast<const JsonArray*>(fA)->Size() ==
                   static_cast<const JsonArray*>(fB)->Size();
        default: {
            const auto& x = static_cast<const JsonCompiledObject&>(*fA);
            const auto& y = static_cast<const JsonCompiledObject&>(*fB);
            return x.GetContext() == y.GetContext() && x.SlotCount() == y.SlotCount();
        }
        }
    }

    // Whether every child has been compared.
    bool Done() const noexcept {
        switch (fA->GetType()) {
        case JsonValue::eJsonObject: return fMember == MemberIterator();
        case JsonValue::eJsonArray: return fIndex == static_cast<const JsonArray*>(fA)->Size();
        default: return fIndex == static_cast<const JsonCompiledObject*>(fA)->SlotCount();
        }
    }

    // Compares children until one pair differs (kUnequal), a pair of containers comes up
    // (kDescend, the pair in `a` and `b`; this frame resumes after it) or none is left (kEqual).
    EVerdict Run(const JsonValue*& a, const JsonValue*& b) {
        switch (fA->GetType()) {
        case JsonValue::eJsonObject: {
            const auto& y = static_cast<const JsonObject*>(fB)->Members();
            while (fMember != MemberIterator()) {
                const JsonObject::Member& member = *fMember;
                ++fMember;
                // Objects built alike hold their members in the same order: walk both and
                // look a key up only where the two walks disagree.
                const JsonObject::Member* twin = nullptr;
                if (fTwin != MemberIterator() && fTwin->Key() == member.Key()) {
                    twin = &*fTwin;
                    ++fTwin;
                } else {
                    twin = y.Find(member.Key());
                    fTwin = MemberIterator(); // the orders differ; stay with lookups
                }
                if (!twin) return EVerdict::kUnequal;
                const EVerdict verdict = Step(member.fValue, twin->fValue, a, b);
                if (verdict != EVerdict::kEqual) return verdict;
            }
            return EVerdict::kEqual;
        }
        case JsonValue::eJsonArray:
            return RunSlots(static_cast<const JsonArray*>(fA)->Elements().data(),
                            static_cast<const JsonArray*>(fB)->Elements().data(),
                            static_cast<const JsonArray*>(fA)->Size(), a, b);
        default:
            return RunSlots(static_cast<const JsonCompiledObject*>(fA)->Slots().data(),
                            static_cast<const JsonCompiledObject*>(fB)->Slots().data(),
                            static_cast<const JsonCompiledObject*>(fA)->SlotCount(), a, b);
        }
    }

private:
    [[gnu::always_inline]] static EVerdict Step(const JsonValue* x, const JsonValue* y,
                                                const JsonValue*& a, const JsonValue*& b) {
        const EVerdict verdict = Compare(x, y);
        if (verdict == EVerdict::kDescend) {
            a = x;
            b = y;
        }
        return verdict;
    }

    EVerdict RunSlots(const JsonValue* const* x, const JsonValue* const* y, size_t size,
                      const JsonValue*& a, const JsonValue*& b) {
        while (fIndex < size) {
            const size_t i = fIndex++;
            const EVerdict verdict = Step(x[i], y[i], a, b);
            if (verdict != EVerdict::kEqual) return verdict;
        }
        return EVerdict::kEqual;
    }
};

} // namespace

bool operator==(const JsonValue& a, const JsonValue& b) {
    const EVerdict verdict = Compare(&a, &b);
    if (verdict != EVerdict::kDescend) return verdict == EVerdict::kEqual;
    std::vector<Frame> open;
    Frame next(&a, &b);
    for (;;) {
        if (!next.Open()) return false;
        // Empty containers (a document's many empty lists) are done once opened.
        if (!next.Done()) open.push_back(next);
        const JsonValue* x = nullptr;
        const JsonValue* y = nullptr;
        for (;;) {
            if (open.empty()) return true;
            const EVerdict step = open.back().Run(x, y);
            if (step == EVerdict::kUnequal) return false;
            if (step == EVerdict::kDescend) break;
            open.pop_back();
        }
        next = Frame(x, y);
    }
}
