// MessagePack encoding of value trees: always the shortest form the format allows.
//
// Deliberate behaviours kept here:
// - Object members are written in the member map's own order, never in insertion order.
// - A compiled object is an ordinary map of its set slots; should fewer set slots be found
//   than its count announces, each missing pair is written as A0 C0 (empty key, nil).
// - A real that still holds its text is converted first, as any read of it is.
#include "json/JsonScalar.h"
#include "json/TreeWalk.h"
#include "json/msgpack/BigEndianWriter.h"

#include <cfloat>
#include <cmath>
#include <cstring>

namespace {

void WriteInteger(const JsonInteger& integer, BigEndianWriter& out) {
    if (integer.IsUnsigned()) {
        out.Write8_64(0xCF, integer.Bits()); // uint 64
        return;
    }
    const auto v = static_cast<long long>(integer.Bits());
    if (v >= -32 && v <= 127) {
        out.Write8(static_cast<unsigned char>(v)); // positive fixint 00-7f, negative fixint e0-ff
    } else if (v < 0) {
        if (v >= -128) {
            out.Write8_8(0xD0, static_cast<uint8_t>(v)); // int 8
        } else if (v >= -32768) {
            out.Write8_16(0xD1, static_cast<uint16_t>(v)); // int 16
        } else if (v >= -2147483648LL) {
            out.Write8_32(0xD2, static_cast<unsigned int>(v)); // int 32
        } else {
            out.Write8_64(0xD3, static_cast<unsigned long long>(v)); // int 64
        }
    } else if (v <= 0xFF) {
        out.Write8_8(0xCC, static_cast<uint8_t>(v)); // uint 8
    } else if (v <= 0xFFFF) {
        out.Write8_16(0xCD, static_cast<uint16_t>(v)); // uint 16
    } else if (v <= 0xFFFFFFFFLL) {
        out.Write8_32(0xCE, static_cast<unsigned int>(v)); // uint 32
    } else {
        out.Write8_64(0xCF, static_cast<unsigned long long>(v)); // uint 64
    }
}

void WriteReal(const JsonReal& real, BigEndianWriter& out) {
    const double value = real.Get();
    // Finite values beyond the float range cannot be exact floats (and must not be narrowed).
    const bool fits = !std::isfinite(value) || std::fabs(value) <= FLT_MAX;
    const float narrow = fits ? static_cast<float>(value) : 0.0f;
    if (fits && static_cast<double>(narrow) == value) { // exactly a float: 0.5, the infinities
        uint32_t bits;
        std::memcpy(&bits, &narrow, 4);
        out.Write8_32(0xCA, bits); // float 32
    } else {
        uint64_t bits;
        std::memcpy(&bits, &value, 8);
        out.Write8_64(0xCB, bits); // float 64 (NaN included)
    }
}

struct MsgPackVisitor {
    static constexpr bool kVisitMissing = true;
    BigEndianWriter& fOut;

    void Scalar(const JsonValue& node) {
        switch (node.GetType()) {
        case JsonValue::eJsonString: fOut.AddString(static_cast<const JsonString&>(node).Get()); break;
        case JsonValue::eJsonInteger: WriteInteger(static_cast<const JsonInteger&>(node), fOut); break;
        case JsonValue::eJsonReal: WriteReal(static_cast<const JsonReal&>(node), fOut); break;
        case JsonValue::eJsonTrue: fOut.Write8(0xC3); break;
        case JsonValue::eJsonFalse: fOut.Write8(0xC2); break;
        default: fOut.Write8(0xC0); break;
        }
    }
    void BeginObject(const JsonObject& object) {
        fOut.AddContainerHeader(0x80, 0xDE, object.Size());
    }
    void EndObject(const JsonObject&, size_t) {}
    void BeginArray(const JsonArray& array) {
        fOut.AddContainerHeader(0x90, 0xDC, array.Size());
    }
    void EndArray(const JsonArray&, size_t) {}
    void BeginCompiled(const JsonCompiledObject& object) {
        fOut.AddContainerHeader(0x80, 0xDE, object.GetContext() ? object.GetSetCount() : 0);
    }
    void EndCompiled(const JsonCompiledObject& object, size_t written) {
        if (!object.GetContext()) return;
        // The output always holds exactly the announced number of pairs.
        for (size_t i = written; i < object.GetSetCount(); ++i) {
            fOut.Write8(0xA0);
            fOut.Write8(0xC0);
        }
    }
    // A compiled object writes as many pairs as its count announces, never more.
    size_t CompiledLimit(const JsonCompiledObject& object) {
        return object.GetContext() ? object.GetSetCount() : 0;
    }
    void Key(const JsonValue&, std::string_view key, bool) { fOut.AddString(key); }
    void Element(bool) {}
    void Missing() { fOut.Write8(0xC0); }
};

void WriteTree(const JsonValue& root, BigEndianWriter* writer) {
    MsgPackVisitor visitor{*writer};
    WalkTree<EMemberOrder::kMapOrder>(root, visitor);
}

} // namespace

bool JsonValue::WriteToMsgPack(std::string& out) const {
    out.clear();
    BigEndianWriter writer(&out);
    AppendToMsgPack(&writer);
    return writer.Finish();
}

void JsonString::AppendToMsgPack(BigEndianWriter* writer) const {
    writer->AddString(Get());
}
void JsonInteger::AppendToMsgPack(BigEndianWriter* writer) const {
    WriteInteger(*this, *writer);
}
void JsonReal::AppendToMsgPack(BigEndianWriter* writer) const {
    WriteReal(*this, *writer);
}
void JsonTrue::AppendToMsgPack(BigEndianWriter* writer) const {
    writer->Write8(0xC3);
}
void JsonFalse::AppendToMsgPack(BigEndianWriter* writer) const {
    writer->Write8(0xC2);
}
void JsonNull::AppendToMsgPack(BigEndianWriter* writer) const {
    writer->Write8(0xC0);
}
void JsonObject::AppendToMsgPack(BigEndianWriter* writer) const {
    WriteTree(*this, writer);
}
void JsonArray::AppendToMsgPack(BigEndianWriter* writer) const {
    WriteTree(*this, writer);
}
void JsonCompiledObject::AppendToMsgPack(BigEndianWriter* writer) const {
    WriteTree(*this, writer);
}
