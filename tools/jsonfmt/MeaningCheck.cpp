// One walk over the tree, only when MessagePack is involved: text read in the standard profile
// keeps every real's text and is written back as read, so text to text needs no check (and
// converting a real here would make the writer print it converted).
#include "tools/jsonfmt/MeaningCheck.h"

#include "json/JsonScalar.h"
#include "json/TreeWalk.h"

#include <cmath>

namespace jsonfmt {

namespace {

struct MeaningVisitor {
    static constexpr bool kVisitMissing = false;
    bool fFromMsgPack;
    Problem& fProblem;
    bool fFound = false;

    void Report(std::string message) {
        if (fFound) return; // the first one is reported; the walk cannot stop early
        fFound = true;
        fProblem = {"", std::move(message)};
    }
    void Scalar(const JsonValue& node) {
        if (node.GetType() == JsonValue::eJsonString) {
            if (fFromMsgPack && !JsonValue::IsUTF8(static_cast<const JsonString&>(node).Get()))
                Report("a string is not valid UTF-8");
        } else if (node.GetType() == JsonValue::eJsonReal) {
            const auto& real = static_cast<const JsonReal&>(node);
            // The text must be taken before Get() converts it.
            const std::string text(real.HasPendingText() ? real.PendingText() : std::string_view());
            if (std::isfinite(real.Get())) return;
            if (fFromMsgPack) {
                Report("a real is NaN or infinite, which JSON has no number for");
            } else {
                Report("the number " + text + " is beyond the range MessagePack can hold (64-bit floating point)");
            }
        }
    }
    void BeginObject(const JsonObject&) {}
    void EndObject(const JsonObject&, size_t) {}
    void BeginArray(const JsonArray&) {}
    void EndArray(const JsonArray&, size_t) {}
    void BeginCompiled(const JsonCompiledObject&) {}
    void EndCompiled(const JsonCompiledObject&, size_t) {}
    void Key(const JsonValue&, std::string_view, bool) {}
    void Element(bool) {}
    void Missing() {}
    size_t CompiledLimit(const JsonCompiledObject&) { return SIZE_MAX; }
};

} // namespace

bool CheckMeaningCarries(const JsonValue& root, bool fromMsgPack, bool toMsgPack, Problem& problem) {
    if (!fromMsgPack && !toMsgPack) return true;
    MeaningVisitor visitor{fromMsgPack, problem};
    WalkTree<EMemberOrder::kMemberOrder>(root, visitor); // the first problem as read
    return !visitor.fFound;
}

} // namespace jsonfmt
