// JSONWrapper: the module's implementation of the host interface Virelo::IJSON over a shared
// JSONData, plus the factories and conversions between the three representations of a
// document (the value tree, the script type "JSON" and IJSON).
//
// Operations are split by area: JSONWrapperRead.cpp (parse, text, lookups, getters, root
// conversions and tests, comparison, clone, error state), JSONWrapperWrite.cpp (setters,
// array changes, removal, iteration, the serialized form) and JSONWrapperInterop.cpp
// (constructors, factories, conversions, the imported host functions).
//
// Deliberate behaviours kept here:
// - Every IJSON operation but the iteration forms clears the error state first; none lets an
//   exception out (an exception is recorded as status Error with its text).
// - operator= shares the other wrapper's JSONData; the copy constructor deep-copies it.
// - Results for inner nodes (FindNodePath, Get, At, element matching, iteration children,
//   removals) refer to the node inside the document: a change through them changes the parent.
// - Only this module's own wrappers are recognised (by their dynamic type); documents of other
//   implementations give 0 or null where a wrapper of this module is needed.
#pragma once

#include "host/InterfaceImpl.h"
#include "host/VireloIJSON.h"
#include "host/VireloInterfaces.h"
#include "host/ijson/JSONData.h"
#include "json/JsonValue.h"

#include <memory>
#include <string>

namespace Virelo::JSON {

class JSONWrapper final : public InterfaceImpl<IJSON> {
public:
    using EJsonStartType = JSON::EJsonStartType;

    // ---- Construction (each wrapper starts with one reference and a JSONData of its own) ----
    explicit JSONWrapper(EJsonStartType start = EJsonStartType::Null);
    /// A null document, then Interface_Parse(text): on a parse error the document stays null
    /// and the error state holds the parse message.
    explicit JSONWrapper(const std::string& text);
    /// Shares `value` (null for an empty pointer).
    explicit JSONWrapper(const JsonAutoRefPtr<JsonValue>& value);
    explicit JSONWrapper(JsonAutoRefPtr<JsonValue>&& value);
    /// A deep copy of the other's document and error state.
    JSONWrapper(const JSONWrapper& other);
    /// Deliberate: shares the other's JSONData (document and error state), unlike the copy
    /// constructor; host code relies on assignment making two views of one document.
    JSONWrapper& operator=(const JSONWrapper& other);
    ~JSONWrapper() override = default;

    // ---- IJSON: text and comparison ----
    unsigned char Interface_Parse(const char* text) override;
    unsigned char Interface_LessThan(const IJSON* other) const override;
    unsigned char Interface_Equals(const IJSON* other) const override;
    unsigned long long Interface_ToString(const char* format, char* buffer,
                                          unsigned long long size) const override;
    unsigned long long Interface_ToCachedString(const char* format, char* buffer,
                                                unsigned long long size) const override;
    // ---- IJSON: lookups and size ----
    IJSON* Interface_FindNodePath(const char* path) const override;
    IJSON* Interface_ElementMatchingString(const char* key, const char* value) const override;
    IJSON* Interface_ElementMatchingDouble(const char* key, double value) const override;
    unsigned long long Interface_Size() const override;
    unsigned char Interface_Empty() const override;
    // ---- IJSON: members and elements ----
    unsigned long long Interface_GetString(const char* key, char* buffer, unsigned long long size,
                                           unsigned char* found) const override;
    unsigned char Interface_GetDouble(const char* key, double* out) const override;
    unsigned char Interface_GetInt(const char* key, int* out) const override;
    unsigned char Interface_GetUInt(const char* key, unsigned int* out) const override;
    unsigned char Interface_GetInt64(const char* key, long long* out) const override;
    unsigned char Interface_GetUInt64(const char* key, unsigned long long* out) const override;
    unsigned char Interface_GetBoolean(const char* key, unsigned char* out) const override;
    IJSON* Interface_Get(const char* key) const override;
    unsigned char Interface_Has(const char* text) const override;
    IJSON* Interface_At(unsigned long long index) const override;
    // ---- IJSON: array and member changes ----
    unsigned char Interface_PushBackBool(unsigned char value) override;
    unsigned char Interface_PushBackString(const char* value) override;
    unsigned char Interface_PushBackDouble(double value) override;
    unsigned char Interface_PushBackJSON(const IJSON* value) override;
    IJSON* Interface_RemoveIndex(unsigned long long index) override;
    IJSON* Interface_RemoveKey(const char* key) override;
    // ---- IJSON: the root as a scalar ----
    unsigned char Interface_AsBool(unsigned char* out) const override;
    unsigned char Interface_AsDouble(double* out) const override;
    unsigned char Interface_AsInt(int* out) const override;
    unsigned char Interface_AsUInt(unsigned int* out) const override;
    unsigned char Interface_AsInt64(long long* out) const override;
    unsigned char Interface_AsUInt64(unsigned long long* out) const override;
    unsigned long long Interface_AsString(char* buffer, unsigned long long size,
                                          unsigned char* copied) const override;
    // ---- IJSON: type tests of the root ----
    unsigned char Interface_IsNull() const override;
    unsigned char Interface_IsBool() const override;
    unsigned char Interface_IsNumber() const override;
    unsigned char Interface_IsDouble() const override;
    unsigned char Interface_IsInt() const override;
    unsigned char Interface_IsUInt() const override;
    unsigned char Interface_IsInt64() const override;
    unsigned char Interface_IsUInt64() const override;
    unsigned char Interface_IsString() const override;
    unsigned char Interface_IsArray() const override;
    unsigned char Interface_IsObject() const override;
    // ---- IJSON: member setters, element replacement ----
    unsigned char Interface_SetBool(const char* key, unsigned char value) override;
    unsigned char Interface_SetDouble(const char* key, double value) override;
    unsigned char Interface_SetInt(const char* key, int value) override;
    unsigned char Interface_SetUInt(const char* key, unsigned int value) override;
    unsigned char Interface_SetInt64(const char* key, long long value) override;
    unsigned char Interface_SetUInt64(const char* key, unsigned long long value) override;
    unsigned char Interface_SetString(const char* key, const char* value) override;
    unsigned char Interface_SetJSON(const char* key, const IJSON* value) override;
    unsigned char Interface_SetNull(const char* key) override;
    unsigned char Interface_ReplaceIndex(unsigned long long index, const IJSON* value) override;
    // ---- IJSON: iteration (neither clears nor sets the error state) ----
    unsigned char Interface_ForEach(ForEachContextCallback callback, void* user,
                                    IContext* context) const override;
    unsigned char Interface_ForEach(ForEachCallback callback, void* user) const override;
    unsigned char Interface_ForEach(ForEachErrorCallback callback, void* user, char* errors,
                                    unsigned int errorsSize) const override;
    // ---- IJSON: copy and the serialized form ----
    IJSON* Interface_Clone() const override;
    unsigned long long Interface_SerializedSize() const override;
    unsigned long long Interface_Deserialize(const char* data, unsigned long long size) override;
    unsigned long long Interface_Serialize(char* buffer, unsigned long long size) const override;
    // ---- IJSON: the last operation's outcome ----
    unsigned int Interface_GetErrorStatus() const override;
    unsigned long long Interface_GetErrorMessage(char* buffer, unsigned long long size,
                                                 unsigned char* copied) const override;

    // ---- Direct operations (bypass the interface; clear the error state first) ----
    /// Parses `text` into the document; `keepOrder` decides whether objects keep insertion
    /// order. On failure keeps the root, records "JSON parse error in line N: ..." and returns
    /// false. Never throws for bad text.
    bool ParseDirect(const std::string& text, bool keepOrder);
    /// Replaces the root with the MessagePack document in `data`. Deliberate: after a failed
    /// decode the root is left empty (not null); every operation treats an empty root as
    /// unusable. Failure: false, status Error, "reading from MsgPack failed".
    bool FromMsgPack(const AutoRefPtr<IDataRef>& data);
    const std::shared_ptr<JSONData>& GetData() const noexcept { return fData; }

    // ---- Factories: a new wrapper (one reference), or empty on failure; never throw ----
    static AutoRefPtr<JSONWrapper> Create();
    static AutoRefPtr<JSONWrapper> CreateEmptyArray();
    static AutoRefPtr<JSONWrapper> CreateNull();
    /// Empty for an empty text or a parse error; otherwise ParseDirect(text, keepOrder).
    static AutoRefPtr<JSONWrapper> Create(const std::string& text, bool keepOrder);
    /// Create(text, true); a null text gives an empty result.
    static AutoRefPtr<JSONWrapper> Create(const char* text);
    /// A deep copy of this module's wrapper; empty for null and for other implementations
    /// (there is no text path here).
    static AutoRefPtr<JSONWrapper> CloneJSON(const AutoRefPtr<IJSON>& json);
    static AutoRefPtr<JSONWrapper> CloneJSON(const IJSON* json);
    /// A wrapper sharing `value`.
    static AutoRefPtr<JSONWrapper> FromVJson(const JsonAutoRefPtr<JsonValue>& value);

    // ---- Text and MessagePack (clear the wrapper's error state; never throw) ----
    /// The document's text: compact for a null or empty format, else indented by `format`.
    static std::string ToJSONString(const AutoRefPtr<JSONWrapper>& json, const char* format);
    static std::string ToJSONString(const JSONWrapper& json, const char* format);
    static void ToJSONString(const AutoRefPtr<JSONWrapper>& json, std::string& out,
                             const char* format);
    static void ToJSONString(const JSONWrapper& json, std::string& out, const char* format);
    /// The MessagePack bytes of the root as a new Virelo::Data; empty when the root is empty or
    /// too large for the format. Does not touch the error state.
    static AutoRefPtr<IDataRef> ToMsgPack(const JSONWrapper& json);

    // ---- Conversions between the representations ----
    /// The tree behind this module's wrapper (shared, one reference added); empty for null and
    /// for other implementations.
    static JsonAutoRefPtr<JsonValue> ToVJson(const IJSON* json);
    static JsonAutoRefPtr<JsonValue> ToVJson(const AutoRefPtr<IJSON>& json);
    /// The tree of a script "JSON" value: shared through the 11100 handshake when the value is
    /// this module's; otherwise (once-per-process warning) its text through the imported
    /// "ToString", parsed. Empty for an empty object or unusable text.
    static JsonAutoRefPtr<JsonValue> JSONObjToVJson(const AutoRefPtr<IUserDefinedType>& object,
                                                    IContext* context);
    /// A wrapper over a script "JSON" value's tree: shared through the handshake, else parsed
    /// from its text as JSONObjToVJson does.
    static AutoRefPtr<JSONWrapper> FromJSONObj(const AutoRefPtr<IUserDefinedType>& object,
                                               IContext* context);
    /// A new script "JSON" value made by the imported "JSON.CreateEmptyObject" and given the
    /// document: shared through the handshake when the host's JSON type is this module's,
    /// otherwise (once-per-process warning) through the imported "JSON.FromString". Deliberate:
    /// a document of another IJSON implementation gives the empty object. Null when the empty
    /// object cannot be created (reported on the context).
    static AutoRefPtr<IUserDefinedType> ToJSONObj(const AutoRefPtr<const IJSON>& json,
                                                  IContext* context);
    static AutoRefPtr<IUserDefinedType> ToJSONObj(const IJSON* json, IContext* context);
    static AutoRefPtr<IUserDefinedType> ToJSONObj(const JSONWrapper* json, IContext* context);
    static AutoRefPtr<IUserDefinedType> ToJSONObj(const JsonAutoRefPtr<JsonValue>& value,
                                                  IContext* context);
    /// Logs, at most once per process, that the host's JSON type is not this module's and
    /// documents travel as text. Nothing with a null context.
    static void ShowEffectivityWarning(IContext* context);

private:
    /// This module's wrapper behind `json`, or null (another implementation or null).
    static const JSONWrapper* Own(const IJSON* json) noexcept;
    /// The root (one reference added); empty when there is no document.
    JsonAutoRefPtr<JsonValue> Root() const;
    /// Parses into the document (the body of Interface_Parse and ParseDirect).
    bool Parse(JSONData& data, const std::string& text, bool keepOrder);
    /// The compact text through this object's own Interface_ToString; false when unavailable.
    bool CompactTextThroughInterface(std::string& out) const;

    std::shared_ptr<JSONData> fData;
};

} // namespace Virelo::JSON
