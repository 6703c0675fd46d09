// Node-path functions: JSON.SubNode, JSON.GetSubNode, JSON.SetSubNode and JSON.RemoveSubNode.
// A path is a string of segments separated by "/" (one leading "/" dropped) or a host vector of
// segments. At an object a segment is a key; at an array a decimal index (std::stoi of a
// segment that starts with a digit: "2x" is 2) or, when empty, skipped; anything else ends it.
//
// Deliberate behaviours kept here:
// - Setting never creates intermediate nodes; only the last segment may name a new member, or
//   the index one past an array's end, which appends.
// - The reading functions report nothing: a path that leads nowhere gives a JSON holding null.
// - A segment too long for an int makes std::stoi throw; the forwarding glue reports it as
//   "Error.JSON.Exception" (the JSON result is then left unset).
#include "json/JsonArray.h"
#include "module/NumberFormat.h"
#include "module/ScriptFunctions.h"


namespace JsonModule {

namespace {

/// A path's segments, one at a time, and how its errors name it. The path is never split into
/// a list: a walk holds one segment, so a path of millions of slashes costs no more memory
/// than its longest segment (the path itself belongs to the caller).
class Path {
public:
    /// A string path: one leading "/" dropped, then split at every "/" (empty segments and a
    /// trailing empty segment included); "" and "/" have no segments at all.
    static Path FromString(const std::string& text) {
        Path path;
        path.fText = &text;
        path.fNext = !text.empty() && text[0] == '/' ? 1 : 0;
        path.fCount = path.fNext == text.size() ? 0 : kUnknown;
        return path;
    }
    /// A vector path: every element is one segment, used as it stands.
    static Path FromVector(const StringVectorPtr& vector) {
        Path path;
        path.fVector = vector.Get();
        path.fCount = vector ? vector->Interface_Size() : 0;
        return path;
    }

    bool Empty() const { return fCount == 0; }
    /// Moves to the next segment; false when there is none left.
    bool Next() {
        if (fVector) {
            if (fIndex >= fCount) return false;
            Virelo::AutoRefPtr<Virelo::IVariant> element(fVector->Interface_At(fIndex++));
            const char* data = element ? element->Interface_GetStringData() : nullptr;
            fSegment.assign(data ? data : "",
                            data ? static_cast<size_t>(element->Interface_GetStringLength()) : 0);
            fLast = fIndex == fCount;
            return true;
        }
        if (fCount == 0 || fNext > fText->size()) return false;
        const size_t slash = fText->find('/', fNext);
        const size_t stop = slash == std::string::npos ? fText->size() : slash;
        fSegment.assign(*fText, fNext, stop - fNext);
        fLast = slash == std::string::npos;
        fNext = stop + 1; // past the end after the last segment
        return true;
    }
    const std::string& Segment() const { return fSegment; }
    bool IsLast() const { return fLast; }

    std::string EmptyMessage() const {
        return IsVector() ? "JSON path vector is empty. Path doesn't exist!"
                          : "JSON path " + *fText + " doesn't exist!";
    }
    std::string Missing() const {
        return IsVector() ? "JSON path vector doesn't exist!" : "JSON path " + *fText + " doesn't exist!";
    }
    std::string OutOfBounds() const {
        return IsVector() ? "JSON path vector with array index which is out of bounds!"
                          : "JSON path " + *fText + " with array index which is out of bounds!";
    }
    std::string CannotRetrieve() const {
        return kCannotRetrieveFromPath + (IsVector() ? fSegment : *fText);
    }

private:
    static constexpr unsigned long long kUnknown = ~0ULL;
    bool IsVector() const { return !fText; }

    const std::string* fText = nullptr;      // string form: the path as the script gave it
    size_t fNext = 0;                        // string form: where the next segment starts
    const Virelo::IVector<std::string>* fVector = nullptr; // vector form (null: no segments)
    unsigned long long fIndex = 0;           // vector form: the next element
    unsigned long long fCount = 0;           // segments (vector form), 0 or kUnknown (string form)
    std::string fSegment;
    bool fLast = false;
};

bool StartsWithDigit(const std::string& segment) {
    return !segment.empty() && segment[0] >= '0' && segment[0] <= '9';
}

/// The array index a segment names: std::stoi reads its leading digits (throws when they
/// exceed an int).
int SegmentIndex(const std::string& segment) {
    return std::stoi(segment, nullptr, 10);
}

JSONObjPtr Read(const JSONObjPtr& json, Path path, IContext* context) {
    JSONObjPtr result = NewJSON(context, JsonValue::eJsonNull);
    const JsonValue* node = json->Value().Get();
    while (node && path.Next()) {
        const std::string& segment = path.Segment();
        if (node->GetType() == JsonValue::eJsonObject) {
            node = static_cast<const JsonObject*>(node)->Find(segment);
        } else if (node->GetType() == JsonValue::eJsonArray) {
            if (segment.empty()) continue; // the walk stays at the array
            const auto& elements = static_cast<const JsonArray*>(node)->Elements();
            const int index = StartsWithDigit(segment) ? SegmentIndex(segment) : -1;
            node = index >= 0 && static_cast<size_t>(index) < elements.size() ? elements[static_cast<size_t>(index)]
                                                                              : nullptr;
        } else {
            node = nullptr;
        }
    }
    if (node) result->SetValue(JsonAutoRefPtr<JsonValue>::Share(const_cast<JsonValue*>(node)));
    return result;
}

/// What the last segment does: set a value, or remove.
struct Removal {};

bool SetMember(JsonObject& object, const std::string& key, const Removal&) {
    object.Erase(key); // erasing a missing key is no error
    return true;
}
template <class T> bool SetMember(JsonObject& object, const std::string& key, const T& value) {
    return InsertValue_internal(&object, key, value);
}

void SetElement(JsonArray& array, unsigned long index, const Removal&) {
    array.EraseAtIndex(index);
}
template <class T> void SetElement(JsonArray& array, unsigned long index, const T& value) {
    JsonAutoRefPtr<JsonValue> node = CreateJSONObject_internal(value);
    if (index == array.Size()) {
        array.AddValue(std::move(node));
    } else {
        array.SetValueAtIndex(index, node);
    }
}

/// Walks a copy of `json` along `path` and sets (or removes) at the last segment. The copy is
/// returned in every case, unchanged after an error.
template <class T>
JSONObjPtr Change(const JSONObjPtr& json, Path path, const T& value, IContext* context) {
    JSONObjPtr copy = CopyOf(json);
    std::string error;
    bool refused = false; // the object refused the key or text: the setter's fault, not the path's
    if (path.Empty()) error = path.EmptyMessage();
    JsonValue* node = copy->Value().Get();
    while (error.empty() && path.Next()) {
        const std::string& segment = path.Segment();
        const bool last = path.IsLast();
        if (node && node->GetType() == JsonValue::eJsonObject) {
            auto& object = static_cast<JsonObject&>(*node);
            if (last) {
                refused = !SetMember(object, segment, value);
                if (refused)
                    error = JsonValue::IsUTF8(segment)
                                ? Texts::CantSetInvalidValue(segment)
                                : std::string(Texts::kCantSetInvalidKey);
                break;
            }
            node = object.Find(segment);
            if (!node) error = path.CannotRetrieve();
        } else if (node && node->GetType() == JsonValue::eJsonArray) {
            auto& array = static_cast<JsonArray&>(*node);
            if (segment.empty()) continue; // skipped; as the last segment nothing is set
            if (!StartsWithDigit(segment)) {
                error = path.Missing();
                break;
            }
            const int index = SegmentIndex(segment);
            // One past the end passes: it appends at the last segment.
            if (index < 0 || static_cast<size_t>(index) > array.Size()) {
                error = path.OutOfBounds();
                break;
            }
            if (last) {
                SetElement(array, static_cast<unsigned long>(index), value);
                break;
            }
            node = static_cast<size_t>(index) < array.Size() ? array.Elements()[static_cast<size_t>(index)] : nullptr;
            if (!node) error = path.CannotRetrieve();
        } else {
            error = path.Missing(); // scalars, null and compiled objects take no segment
        }
    }
    if (refused) {
        // Reported as JSON.Set reports a refused insert.
        Report(context, Virelo::eSeveritySevere, kErrorException, error);
    } else if (!error.empty()) {
        Report(context, Virelo::eSeverityRecoverable, kErrorWrongPath, error);
    }
    return copy;
}

template <class T>
JSONObjPtr SetNodePath(const JSONObjPtr& json, const std::string& path, const T& value, IContext* context) {
    return Change(json, Path::FromString(path), value, context);
}

template <class T>
JSONObjPtr SetNodeVector(const JSONObjPtr& json, const StringVectorPtr& path, const T& value, IContext* context) {
    return Change(json, Path::FromVector(path), value, context);
}

} // namespace

// MARK: - Reading

JSONObjPtr FindNodePath(const JSONObjPtr& json, const std::string& path, IContext* context) {
    return Read(json, Path::FromString(path), context);
}

JSONObjPtr GetFromNodePath(const JSONObjPtr& json, const std::string& path, IContext* context) {
    return FindNodePath(json, path, context);
}

JSONObjPtr GetFromNodeVector(const JSONObjPtr& json, const StringVectorPtr& path, IContext* context) {
    return Read(json, Path::FromVector(path), context);
}

// MARK: - Setting by string path

JSONObjPtr SetNodePathBoolean(const JSONObjPtr& json, const std::string& path, bool value, IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr SetNodePathNumber(const JSONObjPtr& json, const std::string& path, double value, IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr SetNodePathNumberToFormat(const JSONObjPtr& json, const std::string& path, double value,
                                     const std::string& format, IContext* context) {
    return WithNumberFormat(value, format, context,
                            [&](const auto& number) { return SetNodePath(json, path, number, context); });
}
JSONObjPtr SetNodePathString(const JSONObjPtr& json, const std::string& path, const std::string& value,
                             IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr SetNodePathJson(const JSONObjPtr& json, const std::string& path, const JSONObjPtr& value,
                           IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr SetNodePathBooleanArray(const JSONObjPtr& json, const std::string& path, const BoolVectorPtr& value,
                                   IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr SetNodePathNumberArray(const JSONObjPtr& json, const std::string& path, const NumberVectorPtr& value,
                                  IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr SetNodePathStringArray(const JSONObjPtr& json, const std::string& path, const StringVectorPtr& value,
                                  IContext* context) {
    return SetNodePath(json, path, value, context);
}
JSONObjPtr RemoveNodePath(const JSONObjPtr& json, const std::string& path, IContext* context) {
    return SetNodePath(json, path, Removal{}, context);
}

// MARK: - Setting by vector path

JSONObjPtr SetNodeVectorBoolean(const JSONObjPtr& json, const StringVectorPtr& path, bool value,
                                IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr SetNodeVectorNumber(const JSONObjPtr& json, const StringVectorPtr& path, double value,
                               IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr SetNodeVectorNumberToFormat(const JSONObjPtr& json, const StringVectorPtr& path, double value,
                                       const std::string& format, IContext* context) {
    return WithNumberFormat(value, format, context,
                            [&](const auto& number) { return SetNodeVector(json, path, number, context); });
}
JSONObjPtr SetNodeVectorString(const JSONObjPtr& json, const StringVectorPtr& path, const std::string& value,
                               IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr SetNodeVectorJson(const JSONObjPtr& json, const StringVectorPtr& path, const JSONObjPtr& value,
                             IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr SetNodeVectorBooleanArray(const JSONObjPtr& json, const StringVectorPtr& path,
                                     const BoolVectorPtr& value, IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr SetNodeVectorNumberArray(const JSONObjPtr& json, const StringVectorPtr& path,
                                    const NumberVectorPtr& value, IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr SetNodeVectorStringArray(const JSONObjPtr& json, const StringVectorPtr& path,
                                    const StringVectorPtr& value, IContext* context) {
    return SetNodeVector(json, path, value, context);
}
JSONObjPtr RemoveNodeVector(const JSONObjPtr& json, const StringVectorPtr& path, IContext* context) {
    return SetNodeVector(json, path, Removal{}, context);
}

} // namespace JsonModule
