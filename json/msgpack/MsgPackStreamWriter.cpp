// MsgPackStreamWriter. Scalars are encoded by the nodes themselves (AppendToMsgPack) into a
// BigEndianWriter whose target is the output's buffer; finishing it after every item moves the
// item into the buffer, which then hands full pieces on.
#include "json/msgpack/MsgPackStreamWriter.h"

#include "json/TreeWalk.h"
#include "json/msgpack/BigEndianWriter.h"

namespace {

struct StreamVisitor {
    static constexpr bool kVisitMissing = true;
    BigEndianWriter& fWriter;
    ChunkedOutput& fOut;

    void Done() {
        fWriter.Finish(); // appends the item to the buffer (nothing once the writer failed)
        fOut.Step();
    }
    void Scalar(const JsonValue& node) {
        node.AppendToMsgPack(&fWriter);
        Done();
    }
    void BeginObject(const JsonObject& object) {
        fWriter.AddContainerHeader(0x80, 0xDE, object.Size());
        Done();
    }
    void EndObject(const JsonObject&, size_t) {}
    void BeginArray(const JsonArray& array) {
        fWriter.AddContainerHeader(0x90, 0xDC, array.Size());
        Done();
    }
    void EndArray(const JsonArray&, size_t) {}
    // Compiled objects as MsgPackWriter.cpp writes them: exactly the announced pairs.
    void BeginCompiled(const JsonCompiledObject& object) {
        fWriter.AddContainerHeader(0x80, 0xDE, object.GetContext() ? object.GetSetCount() : 0);
        Done();
    }
    void EndCompiled(const JsonCompiledObject& object, size_t written) {
        if (!object.GetContext()) return;
        for (size_t i = written; i < object.GetSetCount(); ++i) {
            fWriter.Write8(0xA0);
            fWriter.Write8(0xC0);
        }
        Done();
    }
    size_t CompiledLimit(const JsonCompiledObject& object) {
        return object.GetContext() ? object.GetSetCount() : 0;
    }
    void Key(const JsonValue&, std::string_view key, bool) {
        fWriter.AddString(key);
        Done();
    }
    void Element(bool) {}
    void Missing() {
        fWriter.Write8(0xC0);
        Done();
    }
};

} // namespace

namespace MsgPackStreamWriter {

bool Write(const JsonValue& root, ChunkedOutput& out, bool sortKeys) {
    BigEndianWriter writer(&out.Buffer());
    StreamVisitor visitor{writer, out};
    if (sortKeys) {
        WalkTree<EMemberOrder::kKeyOrder>(root, visitor);
    } else {
        WalkTree<EMemberOrder::kMemberOrder>(root, visitor);
    }
    const bool ok = writer.Finish();
    out.Flush();
    return ok;
}

} // namespace MsgPackStreamWriter
