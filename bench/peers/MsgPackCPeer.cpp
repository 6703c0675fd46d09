// msgpack-c (C++ object API): encode packs the msgpack::object tree unpacked from our encoding
// of the same document into an sbuffer; decode unpacks our encoding to an object_handle.
#include "bench/common/BenchSupport.h"

#include <msgpack.hpp>

#include <memory>

namespace bench {

namespace {

const char* const sLibrary = "msgpack-c";

void Visit(const msgpack::object& object, DocStats& stats) {
    switch (object.type) {
    case msgpack::type::NIL:
        ++stats.fNulls;
        break;
    case msgpack::type::BOOLEAN:
        ++(object.via.boolean ? stats.fTrues : stats.fFalses);
        break;
    case msgpack::type::POSITIVE_INTEGER:
        stats.AddUnsigned(object.via.u64);
        break;
    case msgpack::type::NEGATIVE_INTEGER:
        stats.AddInteger(object.via.i64);
        break;
    case msgpack::type::FLOAT32:
    case msgpack::type::FLOAT64:
        stats.AddReal(object.via.f64);
        break;
    case msgpack::type::STR:
        stats.AddString(object.via.str.size);
        break;
    case msgpack::type::ARRAY:
        ++stats.fArrays;
        for (uint32_t i = 0; i < object.via.array.size; ++i) Visit(object.via.array.ptr[i], stats);
        break;
    case msgpack::type::MAP:
        ++stats.fObjects;
        for (uint32_t i = 0; i < object.via.map.size; ++i) {
            const msgpack::object_kv& member = object.via.map.ptr[i];
            if (member.key.type != msgpack::type::STR) Fail("msgpack-c: a key is no string");
            stats.AddKey(member.key.via.str.size);
            Visit(member.val, stats);
        }
        break;
    default:
        Fail("msgpack-c: unexpected object type");
    }
}

} // namespace

void RegisterMsgPackC(EArea area, const Corpus& corpus) {
    if (area != EArea::kMsgPack) return;
    for (const Input& input : corpus.fFiles) {
        const std::string ours = OursMsgPack(input);
        std::shared_ptr<const msgpack::object_handle> tree =
            std::make_shared<msgpack::object_handle>(msgpack::unpack(ours.data(), ours.size()));
        DocStats stats;
        Visit(tree->get(), stats);
        ExpectSameStats(sLibrary, input.fName, "decode of our MessagePack", stats, input.fExpected);
        {
            msgpack::sbuffer buffer;
            msgpack::pack(buffer, tree->get());
            ExpectSameStats(sLibrary, input.fName, "MessagePack encoding decoded by ours",
                            OursStatsOfMsgPack(std::string(buffer.data(), buffer.size()),
                                               "msgpack-c's MessagePack"),
                            input.fExpected);
        }
        AddThroughput("MsgPackEncode", input, sLibrary, [tree] {
            msgpack::sbuffer buffer;
            msgpack::pack(buffer, tree->get());
            benchmark::DoNotOptimize(buffer.data());
        });
        AddThroughput("MsgPackDecode", input, sLibrary, [ours] {
            msgpack::object_handle handle = msgpack::unpack(ours.data(), ours.size());
            benchmark::DoNotOptimize(handle.get());
        });
    }
}

} // namespace bench
