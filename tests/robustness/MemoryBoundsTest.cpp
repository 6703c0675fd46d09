// The memory an untrusted input can make the module hold. For every entry point that takes bytes
// from outside (JSON text, MessagePack, the serialized IJSON form, node paths) and for shapes
// chosen to cost the most per byte (deep nesting, empty containers, many tiny values, headers
// that claim more than they hold, long paths), the peak heap held while reading an input of n
// bytes, the result included, must stay within the bounds of MemoryBounds.h (promised in the
// README); measured by counting allocations, never by time.
#include "tests/support/AllocationProbe.h"
#include "tests/support/MemoryBounds.h"

#include "tests/host/FakeHost.h"
#include "tests/support/ModuleExports.h"

#include "host/Data.h"
#include "host/ijson/JSONWrapper.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>


namespace {

using FakeHost::Context;
using FakeHost::Variant;
using Virelo::AutoRefPtr;
using Virelo::IVariant;
using Virelo::JSON::JSONWrapper;

using MemoryBounds::kMsgPackPerByte;
using MemoryBounds::kPathPerByte;
using MemoryBounds::kTextPerByte;

#if defined(VIRELO_JSON_NO_POOL)
constexpr bool kExactBalance = true;
#else
constexpr bool kExactBalance = false; // the node pool keeps emptied pages for reuse
#endif

// Each shape is made about this long; a second size lies just past a power of two, where
// containers that grow by doubling hold the most.
size_t gSize = 0;
constexpr size_t kSizes[] = {64 * 1024, 32 * 1024 + 9};

/// Repeats `unit` until the text is about gSize long, between `head` and `tail`.
std::string Repeat(const std::string& head, const std::string& unit, const std::string& tail,
                   size_t times = 0) {
    if (!times) times = gSize / unit.size();
    std::string out = head;
    out.reserve(head.size() + unit.size() * times + tail.size());
    for (size_t i = 0; i < times; ++i) out += unit;
    return out + tail;
}

std::string Nest(const std::string& open, const std::string& close) {
    const size_t depth = gSize / (open.size() + close.size());
    return Repeat("", open, "", depth) + Repeat("", close, "", depth);
}

std::string Bytes(std::initializer_list<int> bytes) {
    std::string out;
    for (int b : bytes) out += static_cast<char>(b);
    return out;
}

/// A MessagePack array 32 of gSize copies of a one-byte element.
std::string ArrayOf(const std::string& element) {
    const auto count = static_cast<uint32_t>(gSize);
    const std::string header = Bytes({0xDD, int(count >> 24), int((count >> 16) & 0xFF),
                                      int((count >> 8) & 0xFF), int(count & 0xFF)});
    return Repeat(header, element, "", gSize);
}

// What was held when the measurement started; the input, made by the caller, is not counted.
size_t gBaseline = 0;

/// Starts measuring anew: a read calls it once the host's side of the input is in place.
void StartMeasuring() {
    gBaseline = AllocationProbe::LiveBytes();
    AllocationProbe::ResetPeak();
}

struct Shape {
    const char* fName;
    std::string fInput;
};

/// Runs `read` on each shape, made at each size, and checks the peak held against
/// MemoryBounds::Limit(perByte, n).
void ExpectBounded(const std::function<std::vector<Shape>()>& makeShapes, size_t perByte,
                   const std::function<void(const std::string&)>& read) {
    for (const size_t size : kSizes) {
      gSize = size;
      for (const Shape& shape : makeShapes()) {
        SCOPED_TRACE(shape.fName);
        const size_t before = AllocationProbe::LiveBytes();
        StartMeasuring();
        read(shape.fInput);
        const size_t peak = AllocationProbe::PeakBytes() - gBaseline;
        const size_t n = shape.fInput.size();
        std::printf("    %-44s n = %7zu  peak %9zu bytes  %6.1f per byte\n", shape.fName, n, peak,
                    static_cast<double>(peak) / static_cast<double>(n));
        EXPECT_LE(peak, MemoryBounds::Limit(perByte, n));
        if (kExactBalance) {
            EXPECT_EQ(AllocationProbe::LiveBytes(), before) << "the read left memory behind";
        }
      }
    }
}

/// Calls a script function whose result is released before the function returns.
void Call(ExportedFunction function, std::vector<IVariant*> arguments) {
    Context context;
    AutoRefPtr<Variant> result(new Variant(Context::kJsonTypeId, nullptr));
    EXPECT_EQ(function(static_cast<unsigned int>(arguments.size()), arguments.data(), result.Get(), nullptr,
                       &context),
              0u);
}

std::vector<Shape> TextShapes() {
    return {
        {"nested arrays", Nest("[", "]")},
        {"nested objects", Nest(R"({"":)", "}")},
        {"nesting left open", Repeat("", "[", "")},
        {"objects left open", Repeat("", R"({"":)", "")},
        {"empty arrays", Repeat("[", "[],", "[]]")},
        {"empty objects", Repeat("[", "{},", "{}]")},
        {"zeros", Repeat("[", "0,", "0]")},
        {"nulls", Repeat("[", "null,", "null]")},
        {"empty strings", Repeat("[", R"("",)", R"(""])")},
        {"short reals", Repeat("[", "0.5,", "0.5]")},
        {"one-letter members", [] {
             std::string text = "{";
             for (size_t i = 0; text.size() < gSize; ++i) text += "\"" + std::to_string(i) + "\":0,";
             return text + "\"end\":0}";
         }()},
        {"long string", "\"" + std::string(gSize, 'x') + "\""},
        {"long number", std::string(gSize, '7')},
    };
}

TEST(MemoryBounds, JsonText) {
    ExpectBounded(TextShapes, kTextPerByte, [](const std::string& text) {
        Variant argument(text);
        StartMeasuring();
        Call(virelo_module_StringToJson, {&argument});
    });
}

TEST(MemoryBounds, SerializedIjsonForm) {
    ExpectBounded(TextShapes, kTextPerByte, [](const std::string& text) {
        std::string form(8, '\0');
        const unsigned long long length = text.size();
        std::memcpy(form.data(), &length, 8);
        form += text;
        AutoRefPtr<JSONWrapper> document = JSONWrapper::CreateNull();
        StartMeasuring();
        document->Interface_Deserialize(form.data(), form.size());
        document->Interface_Parse("null"); // the result is part of the read: measured, then freed
    });
}

TEST(MemoryBounds, MessagePack) {
    const auto shapes = [] {
      return std::vector<Shape>{
        {"array 32 headers claiming 2^32 - 1", Repeat("", Bytes({0xDD, 0xFF, 0xFF, 0xFF, 0xFF}), "")},
        {"array 16 headers claiming 2^16 - 1", Repeat("", Bytes({0xDC, 0xFF, 0xFF}), "")},
        {"map 32 headers claiming 2^32 - 1", Repeat("", Bytes({0xDF, 0xFF, 0xFF, 0xFF, 0xFF, 0xA0}), "")},
        {"nested arrays of one", Repeat("", Bytes({0x91}), Bytes({0xC0}))},
        {"nested maps of one", Repeat("", Bytes({0x81, 0xA0}), Bytes({0xC0}))},
        {"empty arrays", ArrayOf(Bytes({0x90}))},
        {"empty maps", ArrayOf(Bytes({0x80}))},
        {"nils", ArrayOf(Bytes({0xC0}))},
        {"empty strings", ArrayOf(Bytes({0xA0}))},
        {"array claiming more than it holds", Repeat(Bytes({0xDD, 0xFF, 0xFF, 0xFF, 0xFF}), Bytes({0x00}), "")},
      };
    };
    ExpectBounded(shapes, kMsgPackPerByte, [](const std::string& bytes) {
        Variant argument;
        {
            AutoRefPtr<Virelo::Data> data(new Virelo::Data(bytes));
            argument.Interface_SetDataRef(data.Get());
        }
        StartMeasuring();
        Call(virelo_module_MsgPackToJson, {&argument});
    });
}

TEST(MemoryBounds, NodePaths) {
    Context setup;
    Variant arrayText(std::string("[1]")), objectText(std::string(R"({"a":{"a":1}})"));
    AutoRefPtr<Variant> array(new Variant(Context::kJsonTypeId, nullptr));
    AutoRefPtr<Variant> object(new Variant(Context::kJsonTypeId, nullptr));
    {
        IVariant* arguments[] = {&arrayText};
        ASSERT_EQ(virelo_module_StringToJson(1, arguments, array.Get(), nullptr, &setup), 0u);
        IVariant* objectArguments[] = {&objectText};
        ASSERT_EQ(virelo_module_StringToJson(1, objectArguments, object.Get(), nullptr, &setup), 0u);
    }
    // Empty steps keep a walk on an array: the whole path is walked.
    const auto shapes = [] {
        return std::vector<Shape>{
            {"slashes", std::string(gSize, '/')},
            {"slashes and a last step", std::string(gSize, '/') + "x"},
            {"one long step", std::string(gSize, 'a')},
            {"short steps", Repeat("", "a/", "")},
        };
    };
    Variant text(std::string("a text"));
    ExpectBounded(shapes, kPathPerByte, [&](const std::string& path) {
        Variant argument(path);
        StartMeasuring();
        Call(virelo_module_GetFromNodePath, {array.Get(), &argument});
        Call(virelo_module_GetFromNodePath, {object.Get(), &argument});
        Call(virelo_module_SetNodePathString, {array.Get(), &argument, &text});
        Call(virelo_module_SetNodePathString, {object.Get(), &argument, &text});
    });
    ExpectBounded(shapes, kPathPerByte, [&](const std::string& path) {
        AutoRefPtr<JSONWrapper> document = JSONWrapper::Create("[1]");
        StartMeasuring();
        AutoRefPtr<Virelo::IJSON> found(document->Interface_FindNodePath(path.c_str()));
    });
}

} // namespace
