// HostJson: the host's own Virelo::IJSON, a text holder that reads the serialized form
// (8-byte host-order length, then the text) and hands the text to modules. It supports only
// what handing a stored document to a module needs: Interface_Deserialize, Interface_ToString,
// Interface_SerializedSize, Interface_Serialize and the reference count. It never parses or
// checks the text (the module that reads it does), so it answers no lookup: every other
// operation returns its failure value (0 or null) and the error status is always 0. Being
// another implementation than the module's is the point: modules must take it through its text.
#pragma once

#include "host/VireloIJSON.h"
#include "tools/vhost/host/RefCounted.h"

#include <string>

namespace vhost {

class HostJson final : public RefCounted<Virelo::IJSON> {
public:
    /// A document with the text `text` (not checked); one reference for the caller.
    static Virelo::AutoRefPtr<HostJson> Create(std::string text = "null");

    /// The text the document holds.
    const std::string& Text() const { return fText; }

    // ---- Supported ----
    /// The text (the format is ignored) with a NUL when its length is below `size`; returns
    /// length + 1. A null buffer is never written.
    unsigned long long Interface_ToString(const char* format, char* buffer,
                                          unsigned long long size) const override;
    /// 8 + the text's length.
    unsigned long long Interface_SerializedSize() const override;
    /// Takes the text of a serialized form; the bytes consumed, or all ones (text unchanged)
    /// when `data` is null, shorter than 8 bytes or shorter than the length it announces.
    unsigned long long Interface_Deserialize(const char* data, unsigned long long size) override;
    /// Writes the serialized form; the bytes written, or all ones when `buffer` is null or
    /// smaller than Interface_SerializedSize().
    unsigned long long Interface_Serialize(char* buffer, unsigned long long size) const override;
    /// Always 0: nothing here records an error.
    unsigned int Interface_GetErrorStatus() const override { return 0; }

    // ---- Not supported: each returns 0 or null and changes nothing ----
    unsigned char Interface_Parse(const char*) override { return 0; }
    unsigned char Interface_LessThan(const IJSON*) const override { return 0; }
    unsigned char Interface_Equals(const IJSON*) const override { return 0; }
    unsigned long long Interface_ToCachedString(const char*, char*,
                                                unsigned long long) const override {
        return 0;
    }
    IJSON* Interface_FindNodePath(const char*) const override { return nullptr; }
    IJSON* Interface_ElementMatchingString(const char*, const char*) const override {
        return nullptr;
    }
    IJSON* Interface_ElementMatchingDouble(const char*, double) const override { return nullptr; }
    unsigned long long Interface_Size() const override { return 0; }
    unsigned char Interface_Empty() const override { return 0; }
    /// "Not found" (`*found` 0) for every key: the text is never looked into.
    unsigned long long Interface_GetString(const char*, char*, unsigned long long,
                                           unsigned char* found) const override;
    unsigned char Interface_GetDouble(const char*, double*) const override { return 0; }
    unsigned char Interface_GetInt(const char*, int*) const override { return 0; }
    unsigned char Interface_GetUInt(const char*, unsigned int*) const override { return 0; }
    unsigned char Interface_GetInt64(const char*, long long*) const override { return 0; }
    unsigned char Interface_GetUInt64(const char*, unsigned long long*) const override { return 0; }
    unsigned char Interface_GetBoolean(const char*, unsigned char*) const override { return 0; }
    IJSON* Interface_Get(const char*) const override { return nullptr; }
    unsigned char Interface_Has(const char*) const override { return 0; }
    IJSON* Interface_At(unsigned long long) const override { return nullptr; }
    unsigned char Interface_PushBackBool(unsigned char) override { return 0; }
    unsigned char Interface_PushBackString(const char*) override { return 0; }
    unsigned char Interface_PushBackDouble(double) override { return 0; }
    unsigned char Interface_PushBackJSON(const IJSON*) override { return 0; }
    IJSON* Interface_RemoveIndex(unsigned long long) override { return nullptr; }
    IJSON* Interface_RemoveKey(const char*) override { return nullptr; }
    unsigned char Interface_AsBool(unsigned char*) const override { return 0; }
    unsigned char Interface_AsDouble(double*) const override { return 0; }
    unsigned char Interface_AsInt(int*) const override { return 0; }
    unsigned char Interface_AsUInt(unsigned int*) const override { return 0; }
    unsigned char Interface_AsInt64(long long*) const override { return 0; }
    unsigned char Interface_AsUInt64(unsigned long long*) const override { return 0; }
    /// 0 with `*copied` 0.
    unsigned long long Interface_AsString(char*, unsigned long long,
                                          unsigned char* copied) const override;
    unsigned char Interface_IsNull() const override { return 0; }
    unsigned char Interface_IsBool() const override { return 0; }
    unsigned char Interface_IsNumber() const override { return 0; }
    unsigned char Interface_IsDouble() const override { return 0; }
    unsigned char Interface_IsInt() const override { return 0; }
    unsigned char Interface_IsUInt() const override { return 0; }
    unsigned char Interface_IsInt64() const override { return 0; }
    unsigned char Interface_IsUInt64() const override { return 0; }
    unsigned char Interface_IsString() const override { return 0; }
    unsigned char Interface_IsArray() const override { return 0; }
    unsigned char Interface_IsObject() const override { return 0; }
    unsigned char Interface_SetBool(const char*, unsigned char) override { return 0; }
    unsigned char Interface_SetDouble(const char*, double) override { return 0; }
    unsigned char Interface_SetInt(const char*, int) override { return 0; }
    unsigned char Interface_SetUInt(const char*, unsigned int) override { return 0; }
    unsigned char Interface_SetInt64(const char*, long long) override { return 0; }
    unsigned char Interface_SetUInt64(const char*, unsigned long long) override { return 0; }
    unsigned char Interface_SetString(const char*, const char*) override { return 0; }
    unsigned char Interface_SetJSON(const char*, const IJSON*) override { return 0; }
    unsigned char Interface_SetNull(const char*) override { return 0; }
    unsigned char Interface_ReplaceIndex(unsigned long long, const IJSON*) override { return 0; }
    unsigned char Interface_ForEach(ForEachContextCallback, void*,
                                    Virelo::IContext*) const override {
        return 0;
    }
    unsigned char Interface_ForEach(ForEachCallback, void*) const override { return 0; }
    unsigned char Interface_ForEach(ForEachErrorCallback, void*, char*,
                                    unsigned int) const override {
        return 0;
    }
    IJSON* Interface_Clone() const override { return nullptr; }
    /// 0 with `*copied` 0: there is never a message.
    unsigned long long Interface_GetErrorMessage(char*, unsigned long long,
                                                 unsigned char* copied) const override;

private:
    explicit HostJson(std::string text) : fText(std::move(text)) {}

    std::string fText;
};

} // namespace vhost
