// Fuzz target: node paths. The input is a document, a zero byte, then a path (without a zero
// byte the whole input is the document). The path is followed by JsonValue::NodeFromPath
// (std::out_of_range, documented for array steps beyond int, is the only exception allowed) and
// by the IJSON FindNodePath of a JSONWrapper over the same tree, which never throws. Whatever
// either finds must be a node of the tree, and where both find one it is the same node. Then
// nodes of the tree are looked up by paths built from their keys and indexes: both walks must
// find exactly that node.
//
// The two walks differ on purpose elsewhere: FindNodePath stays on an array for an empty step
// and reads an index with strtol truncated to 32 bits, NodeFromPath throws for such digits.
#include "fuzz/FuzzSupport.h"

#include "host/VireloInterfaces.h"
#include "host/ijson/JSONWrapper.h"
#include "json/ParserContext.h"

#include <stdexcept>
#include <unordered_set>

namespace {

using namespace FuzzSupport;
using Virelo::AutoRefPtr;
using Virelo::IJSON;
using Virelo::JSON::JSONWrapper;

/// How many built paths are tried per input.
constexpr size_t kMaxBuiltPaths = 256;

/// NodeFromPath's node; null when it finds none or the documented exception is thrown.
const JsonValue* ByNodeFromPath(const JsonValue& root, const std::string& path) {
    try {
        return root.NodeFromPath(path).Get();
    } catch (const std::out_of_range&) {
        return nullptr;
    }
}

/// FindNodePath's node, with the error state it must leave: none after a hit, a warning or an
/// error after a miss.
const JsonValue* ByFindNodePath(const JSONWrapper& wrapper, const std::string& path) {
    AutoRefPtr<IJSON> found(wrapper.Interface_FindNodePath(path.c_str()));
    const unsigned int status = wrapper.Interface_GetErrorStatus();
    if (!found) {
        FUZZ_CHECK(status == 1 || status == 2);
        return nullptr;
    }
    FUZZ_CHECK(status == 0);
    return JSONWrapper::ToVJson(found).Get();
}

struct Entry {
    const JsonValue* fNode;
    std::string fPath;     // "/" followed by the steps joined with "/"
    bool fUsable;          // every step survives the path syntax
    bool fLastStepEmpty;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t zero = input.find('\0');
    const std::string document = input.substr(0, zero);
    const std::string rawPath = zero == std::string::npos ? std::string() : input.substr(zero + 1);
    // FindNodePath takes a C string; both walks get the same text, NodeFromPath also the rest.
    const std::string path = rawPath.substr(0, rawPath.find('\0'));

    ParserContext ctx;
    ctx.fKeepOrder = true;
    ctx.fCheckUTF8 = true;
    const JsonAutoRefPtr<JsonValue> root = JsonValue::ReadFromString(document, &ctx, nullptr);
    if (!root) return 0;

    // Every node of the tree, and for a bounded number of them the path that names them.
    std::unordered_set<const JsonValue*> nodes;
    std::vector<Entry> entries;
    std::vector<Entry> pending{{root.Get(), "", true, false}};
    while (!pending.empty()) {
        Entry entry = std::move(pending.back());
        pending.pop_back();
        nodes.insert(entry.fNode);
        if (entries.size() < kMaxBuiltPaths) entries.push_back(entry);
        const bool deeper = entry.fUsable && entries.size() + pending.size() < 4 * kMaxBuiltPaths;
        auto child = [&](const JsonValue* node, const std::string& step) {
            const bool usable = deeper && step.find('/') == std::string::npos &&
                                step.find('\0') == std::string::npos;
            pending.push_back({node, entry.fPath + "/" + step, usable, step.empty()});
        };
        if (entry.fNode->GetType() == JsonValue::eJsonObject) {
            for (const JsonObject::Member& member : static_cast<const JsonObject&>(*entry.fNode).Members())
                child(member.fValue, std::string(member.Key()));
        } else if (entry.fNode->GetType() == JsonValue::eJsonArray) {
            const auto& elements = static_cast<const JsonArray&>(*entry.fNode).Elements();
            for (size_t i = 0; i < elements.size(); ++i) child(elements[i], std::to_string(i));
        }
    }

    AutoRefPtr<JSONWrapper> wrapper(new JSONWrapper(root));

    // The path from the input.
    const JsonValue* viaNode =
        HeldWithin(MemoryBounds::kPathPerByte, path.size(), [&] { return ByNodeFromPath(*root, path); });
    const JsonValue* viaFind =
        HeldWithin(MemoryBounds::kPathPerByte, path.size(), [&] { return ByFindNodePath(*wrapper, path); });
    FUZZ_CHECK(!viaNode || nodes.count(viaNode));
    FUZZ_CHECK(!viaFind || nodes.count(viaFind));
    if (viaNode && viaFind) FUZZ_CHECK(viaNode == viaFind);
    const JsonValue* viaRaw = ByNodeFromPath(*root, rawPath);
    FUZZ_CHECK(!viaRaw || nodes.count(viaRaw));

    // Paths built from the tree. A trailing empty step is dropped by both walks, so such a
    // path names the parent; an empty step elsewhere is a member named "".
    for (const Entry& entry : entries) {
        if (!entry.fUsable || entry.fLastStepEmpty) continue;
        FUZZ_CHECK(ByNodeFromPath(*root, entry.fPath) == entry.fNode);
        FUZZ_CHECK(ByFindNodePath(*wrapper, entry.fPath) == entry.fNode);
    }
    return 0;
}
