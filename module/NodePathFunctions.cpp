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

#include <vector>

namespace JsonModule {

namespace {

/// The segments of a path, and how its errors name it.
struct Path {
    std::vector<std::string> fSegments;
    bool fFromVector = false;
    std::string fText; // the path as the script gave it (string form)

    static Path FromString(const std::string& text) {
        Path path;
        path.fText = text;
        const size_t start = !text.empty() && text[0] == '/' ? 1 : 0;
        if (start == text.size()) return path; // the empty path
        for (size_t pos = start;;) {
            const size_t slash = text.find('/', pos);
            path.fSegments.push_back(text.substr(pos, slash == std::string::npos ? std::string::npos : slash - pos));
            if (slash == std::string::npos) break;
            pos = slash + 1;
        }
        return path;
    }

    static Path FromVector(const StringVectorPtr& vector) {
        Path path;
        path.fFromVector = true;
        if (!vector) return path;
        const unsigned long long size = vector->Interface_Size();
        for (unsigned long long i = 0; i < size; ++i) {
            Virelo::AutoRefPtr<Virelo::IVariant> element(vector->Interface_At(i));
            const char* data = element ? element->Interface_GetStringData() : nullptr;
            path.fSegments.emplace_back(data ? data : "",
                                        data ? static_cast<size_t>(element->Interface_GetStringLength()) : 0);
        }
        return path;
    }

    std::string Empty() const {
        return fFromVector ? "JSON path vector is empty. Path doesn't exist!" : "JSON path " + fText + " doesn't exist!";
    }
    std::string Missing() const {
        return fFromVector ? "JSON path vector doesn't exist!" : "JSON path " + fText + " doesn't exist!";
    }
    std::string OutOfBounds() const {
        return fFromVector ? "JSON path vector with array index which is out of bounds!"
                           : "JSON path " + fText + " with array index which is out of bounds!";
    }
    std::string CannotRetrieve(const std::string& segment) const {
        return "Couldn't retrieve JSON element from path " + (fFromVector ? segment : fText);
    }
};

bool StartsWithDigit(const std::string& segment) {
    return !segment.empty() && segment[0] >= '0' && segment[0] <= '9';
}

/// The array index a segment names: std::stoi reads its leading digits (throws when they
/// exceed an int).
int SegmentIndex(const std::string& segment) {
    return std::stoi(segment, nullptr, 10);
}

JSONObjPtr Read(const JSONObjPtr& json, const Path& path, IContext* context) {
    JSONObjPtr result = NewJSON(context, JsonValue::eJsonNull);
    const JsonValue* node = json->Value().Get();
    for (const std::string& segment : path.fSegments) {
        if (!node) break;
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
JSONObjPtr Change(const JSONObjPtr& json, const Path& path, const T& value, IContext* context) {
    JSONObjPtr copy = CopyOf(json);
    std::string error;
    bool refused = false; // the object refused the key or text: the setter's fault, not the path's
    if (path.fSegments.empty()) error = path.Empty();
    JsonValue* node = copy->Value().Get();
    for (size_t i = 0; error.empty() && i < path.fSegments.size(); ++i) {
        const std::string& segment = path.fSegments[i];
        const bool last = i + 1 == path.fSegments.size();
        if (node && node->GetType() == JsonValue::eJsonObject) {
            auto& object = static_cast<JsonObject&>(*node);
            if (last) {
                refused = !SetMember(object, segment, value);
                if (refused)
                    error = JsonValue::IsUTF8(segment)
                                ? "Can't set key/value pair into JSON, value for key \"" + segment +
                                      "\" is not a valid UTF8-string"
                                : "Can't set key/value pair into JSON, JSON key is not a valid UTF8-string";
                break;
            }
            node = object.Find(segment);
            if (!node) error = path.CannotRetrieve(segment);
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
            if (!node) error = path.CannotRetrieve(segment);
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
