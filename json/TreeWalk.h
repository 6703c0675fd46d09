// A depth-first walk over a value tree with an explicit stack of frames, used by the writers.
// The visitor sees containers open and close, member keys, element starts and scalars, in
// document order; nesting depth costs heap frames, never native stack.
#pragma once

#include "json/JsonArray.h"
#include "json/JsonCompiledObject.h"
#include "json/JsonObject.h"

#include <algorithm>
#include <vector>

enum class EMemberOrder {
    kMemberOrder, ///< insertion order for ordered objects (the text writer's order)
    kMapOrder,    ///< the member map's own iteration order (the MessagePack order)
    /// Sorted by key, byte by byte (so by code point for UTF-8 keys): for tools that sort
    /// keys. Compiled objects keep their slot order.
    kKeyOrder,
};

/// Visits `root`. The visitor provides:
///   static constexpr bool kVisitMissing;  // report null children (else they are skipped)
///   void Scalar(const JsonValue&);
///   void BeginObject(const JsonObject&);  void EndObject(const JsonObject&, size_t written);
///   void BeginArray(const JsonArray&);    void EndArray(const JsonArray&, size_t written);
///   void BeginCompiled(const JsonCompiledObject&);
///   void EndCompiled(const JsonCompiledObject&, size_t written);
///   void Key(const JsonValue& container, std::string_view key, bool first);
///   void Element(bool first);
///   void Missing();                       // a null child, after its Key/Element
///   size_t CompiledLimit(const JsonCompiledObject&); // members to visit at most
/// Empty compiled-object slots are always skipped.
template <EMemberOrder Order, class Visitor> void WalkTree(const JsonValue& root, Visitor& visitor) {
    struct Frame {
        const JsonValue* node;
        size_t next;    // next child index (objects: into `members`)
        size_t end;     // one past the last child index
        size_t begin;   // objects: where their members start in `members`
        size_t written; // children reported so far
        size_t limit;   // compiled objects: members to visit at most
    };
    std::vector<Frame> frames;
    std::vector<const JsonObject::Member*> members; // the open objects' members, stacked

    auto enter = [&](const JsonValue& node) {
        switch (node.GetType()) {
        case JsonValue::eJsonObject: {
            const auto& object = static_cast<const JsonObject&>(node);
            const size_t begin = members.size();
            if constexpr (Order == EMemberOrder::kMemberOrder) {
                object.AppendOrderedMembers(members);
            } else if constexpr (Order == EMemberOrder::kKeyOrder) {
                for (const auto& member : object.Members()) members.push_back(&member);
                std::sort(members.begin() + static_cast<std::ptrdiff_t>(begin), members.end(),
                          [](const JsonObject::Member* a, const JsonObject::Member* b) {
                              return a->Key() < b->Key();
                          });
            } else {
                for (const auto& member : object.Members()) members.push_back(&member);
            }
            visitor.BeginObject(object);
            frames.push_back({&node, begin, members.size(), begin, 0, 0});
            break;
        }
        case JsonValue::eJsonArray: {
            const auto& array = static_cast<const JsonArray&>(node);
            visitor.BeginArray(array);
            frames.push_back({&node, 0, array.Size(), 0, 0, 0});
            break;
        }
        case JsonValue::eJsonCompiledObject: {
            const auto& object = static_cast<const JsonCompiledObject&>(node);
            visitor.BeginCompiled(object);
            frames.push_back({&node, 0, object.GetContext() ? object.SlotCount() : 0, 0, 0,
                              visitor.CompiledLimit(object)});
            break;
        }
        default:
            visitor.Scalar(node);
            break;
        }
    };

    enter(root);
    while (!frames.empty()) {
        Frame& frame = frames.back();
        const JsonValue& container = *frame.node;
        const JsonValue* child = nullptr;
        if (frame.next == frame.end ||
            (container.GetType() == JsonValue::eJsonCompiledObject && frame.written == frame.limit)) {
            const size_t written = frame.written;
            const size_t begin = frame.begin;
            frames.pop_back();
            switch (container.GetType()) {
            case JsonValue::eJsonObject:
                members.resize(begin);
                visitor.EndObject(static_cast<const JsonObject&>(container), written);
                break;
            case JsonValue::eJsonArray:
                visitor.EndArray(static_cast<const JsonArray&>(container), written);
                break;
            default:
                visitor.EndCompiled(static_cast<const JsonCompiledObject&>(container), written);
                break;
            }
            continue;
        }
        const bool first = frame.written == 0;
        switch (container.GetType()) {
        case JsonValue::eJsonObject: {
            const JsonObject::Member* member = members[frame.next++];
            child = member->fValue;
            if (!child && !Visitor::kVisitMissing) continue;
            visitor.Key(container, member->Key(), first);
            break;
        }
        case JsonValue::eJsonArray: {
            child = static_cast<const JsonArray&>(container).Elements()[frame.next++];
            if (!child && !Visitor::kVisitMissing) continue;
            visitor.Element(first);
            break;
        }
        default: {
            const auto& object = static_cast<const JsonCompiledObject&>(container);
            const size_t index = frame.next++;
            child = object.Slots()[index];
            if (!child) continue;
            visitor.Key(container, object.GetContext()->Key(index), first);
            break;
        }
        }
        ++frame.written;
        if (child) {
            enter(*child); // may grow `frames`: `frame` is not used after this point
        } else {
            visitor.Missing();
        }
    }
}
