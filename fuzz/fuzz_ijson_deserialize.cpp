// Fuzz target: the serialized form of Virelo::IJSON (8-byte host-order length, then the compact
// text). The input goes to a JSONWrapper's Interface_Deserialize as it is, and once more with
// its length field set to the bytes that follow. After a successful read the document is
// serialized into a buffer of exactly Interface_SerializedSize bytes; that form must read back
// to an equal document and serialize to the same bytes. Then the caller-buffer operations
// (ToString, AsString, GetString, GetErrorMessage, Serialize) are called with every buffer
// size from 0 up to a little past what they need: each buffer is its own heap block of exactly
// the promised size, so AddressSanitizer sees any byte written past it.
//
// GetString copies when the length is at most the size and then writes length + 1 bytes; its
// callers give one spare byte, and so does this target.
#include "fuzz/FuzzSupport.h"

#include "host/VireloInterfaces.h"
#include "host/ijson/JSONWrapper.h"

#include <cstring>
#include <memory>

namespace {

using namespace FuzzSupport;
using Virelo::AutoRefPtr;
using Virelo::IJSON;
using Virelo::JSON::JSONWrapper;

constexpr unsigned long long kAllOnes = ~0ULL;
constexpr size_t kLengthBytes = sizeof(uint64_t);
/// Sizes tried below and above each operation's need.
constexpr unsigned long long kSlack = 3;

/// A heap block of exactly `size` bytes (a valid zero-size block for 0).
std::unique_ptr<char[]> Block(unsigned long long size) {
    return std::unique_ptr<char[]>(new char[static_cast<size_t>(size)]);
}

/// The sizes worth trying for an operation that needs `needed` bytes: small ones, and those
/// around the need.
template <class F> void ForSizes(unsigned long long needed, F&& f) {
    for (unsigned long long size = 0; size <= kSlack; ++size) f(size);
    const unsigned long long near = needed > kSlack ? needed - kSlack : 0;
    for (unsigned long long size = near > kSlack ? near : kSlack + 1; size <= needed + kSlack; ++size)
        f(size);
}

/// ToString copies the text and a NUL when the length is below the size.
void CheckToString(const JSONWrapper& json, const char* format) {
    const unsigned long long needed = json.Interface_ToString(format, nullptr, 0);
    if (needed == 0) return; // no document
    std::string text(static_cast<size_t>(needed - 1), '\0');
    {
        auto full = Block(needed);
        FUZZ_CHECK(json.Interface_ToString(format, full.get(), needed) == needed);
        FUZZ_CHECK(full[needed - 1] == '\0');
        text.assign(full.get(), static_cast<size_t>(needed - 1));
    }
    ForSizes(needed, [&](unsigned long long size) {
        auto buffer = Block(size);
        if (size) std::memset(buffer.get(), 'x', static_cast<size_t>(size));
        FUZZ_CHECK(json.Interface_ToString(format, buffer.get(), size) == needed);
        if (size >= needed) FUZZ_CHECK(std::memcmp(buffer.get(), text.data(), text.size()) == 0);
    });
}

void CheckAsString(const JSONWrapper& json) {
    unsigned char copied = 7;
    FUZZ_CHECK(json.Interface_AsString(nullptr, 0, &copied) == 0); // a null output: 0 at once
    FUZZ_CHECK(copied == 0);
    char probe[1];
    const unsigned long long needed = json.Interface_AsString(probe, 0, &copied);
    FUZZ_CHECK(copied == 0);
    if (needed == 0) return; // no string form
    ForSizes(needed, [&](unsigned long long size) {
        auto buffer = Block(size);
        unsigned char wasCopied = 7;
        FUZZ_CHECK(json.Interface_AsString(buffer.get(), size, &wasCopied) == needed);
        FUZZ_CHECK(wasCopied == (size >= needed ? 1 : 0));
        if (wasCopied) FUZZ_CHECK(buffer[needed - 1] == '\0');
    });
}

void CheckGetString(const JSONWrapper& json, const std::string& key) {
    unsigned char found = 7;
    FUZZ_CHECK(json.Interface_GetString(key.c_str(), nullptr, 0, &found) == 0); // null output
    FUZZ_CHECK(found == 0);
    char probe[1]; // size 0 still writes the NUL of an empty text
    const unsigned long long needed = json.Interface_GetString(key.c_str(), probe, 0, &found);
    if (needed == 0) {
        FUZZ_CHECK(found == 0);
        return;
    }
    FUZZ_CHECK(found == 1);
    const unsigned long long length = needed - 1;
    ForSizes(length, [&](unsigned long long size) {
        auto buffer = Block(size + 1); // the spare byte the convention asks for
        unsigned char wasFound = 7;
        FUZZ_CHECK(json.Interface_GetString(key.c_str(), buffer.get(), size, &wasFound) == needed);
        FUZZ_CHECK(wasFound == 1);
        if (length <= size) FUZZ_CHECK(buffer[length] == '\0');
    });
}

void CheckErrorMessage(const JSONWrapper& json) {
    unsigned char copied = 7;
    const unsigned long long needed = json.Interface_GetErrorMessage(nullptr, 0, &copied);
    FUZZ_CHECK(copied == 0);
    FUZZ_CHECK(needed >= 1);
    ForSizes(needed, [&](unsigned long long size) {
        auto buffer = Block(size);
        unsigned char wasCopied = 7;
        FUZZ_CHECK(json.Interface_GetErrorMessage(buffer.get(), size, &wasCopied) == needed);
        FUZZ_CHECK(wasCopied == (size >= needed ? 1 : 0));
        if (wasCopied) FUZZ_CHECK(buffer[needed - 1] == '\0');
    });
}

/// Serializes into a buffer of exactly the announced size; smaller buffers are refused.
std::string Serialize(const JSONWrapper& json) {
    const unsigned long long size = json.Interface_SerializedSize();
    FUZZ_CHECK(size >= kLengthBytes);
    auto buffer = Block(size);
    FUZZ_CHECK(json.Interface_Serialize(buffer.get(), size) == size);
    uint64_t length = 0;
    std::memcpy(&length, buffer.get(), kLengthBytes);
    FUZZ_CHECK(length == size - kLengthBytes);
    for (unsigned long long smaller = size > kSlack ? size - kSlack : 0; smaller < size; ++smaller) {
        auto tooSmall = Block(smaller);
        FUZZ_CHECK(json.Interface_Serialize(tooSmall.get(), smaller) == kAllOnes);
    }
    FUZZ_CHECK(json.Interface_Serialize(nullptr, size) == kAllOnes);
    return std::string(buffer.get(), static_cast<size_t>(size));
}

void CheckSerializedForm(const std::string& bytes) {
    AutoRefPtr<JSONWrapper> json(new JSONWrapper());
    const unsigned long long consumed = HeldWithin(MemoryBounds::kTextPerByte, bytes.size(), [&] {
        return json->Interface_Deserialize(bytes.data(), bytes.size());
    });
    CheckErrorMessage(*json);
    if (consumed == kAllOnes) return;

    uint64_t length = 0;
    FUZZ_CHECK(bytes.size() >= kLengthBytes);
    std::memcpy(&length, bytes.data(), kLengthBytes);
    FUZZ_CHECK(consumed == length + kLengthBytes);
    FUZZ_CHECK(json->Interface_GetErrorStatus() == 0);

    CheckToString(*json, "");
    CheckToString(*json, "  ");
    CheckAsString(*json);
    const JsonAutoRefPtr<JsonValue> root = JSONWrapper::ToVJson(json.Get());
    FUZZ_CHECK(root);
    if (root->GetType() == JsonValue::eJsonObject) {
        size_t tried = 0;
        for (const JsonObject::Member& member : static_cast<const JsonObject&>(*root).Members()) {
            if (member.Key().find('\0') != std::string::npos) continue;
            CheckGetString(*json, std::string(member.Key()));
            if (++tried == 4) break;
        }
    }
    CheckGetString(*json, "no such member");
    CheckErrorMessage(*json); // the warning of the missing member, or an error on a non-object

    const std::string once = Serialize(*json);
    const TreeFacts facts = Inspect(*root);
    if (facts.fNonFinite || facts.fLeadingZeroInteger) return; // such texts do not read back

    AutoRefPtr<JSONWrapper> again(new JSONWrapper());
    FUZZ_CHECK(again->Interface_Deserialize(once.data(), once.size()) == once.size());
    // A real below 1 without its text prints a digit more each round (see FuzzSupport.h).
    const std::string twice = Serialize(*again);
    if (!facts.fFractionWithoutText) FUZZ_CHECK(twice == once);
    if (!facts.fNaN) FUZZ_CHECK(json->Interface_Equals(again.Get()) == 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    CheckSerializedForm(bytes);
    if (size >= kLengthBytes) {
        const uint64_t length = size - kLengthBytes;
        std::memcpy(bytes.data(), &length, kLengthBytes);
        CheckSerializedForm(bytes);
    }
    return 0;
}
