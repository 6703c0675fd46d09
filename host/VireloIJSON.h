// Virelo::IJSON: the host's interface to a JSON document, implemented by JSON modules. The
// operation order is the binary contract. Booleans cross as unsigned char (0 or 1). Every
// operation but the iteration forms first clears the document's error state; failures are
// reported by the result plus Interface_GetErrorStatus (0 none, 1 warning, 2 error) and
// Interface_GetErrorMessage. A "key" names one member of the root object, never a path.
#pragma once

#include "host/VireloInterfaces.h"

#include <string>
#include <vector>

namespace Virelo {

class IJSON : public IObject {
public:
    using ForEachCallback = unsigned char (*)(const char* name, const IJSON* child, void* user);
    using ForEachErrorCallback = unsigned char (*)(const char* name, const IJSON* child, void* user,
                                                   char* error, unsigned int errorSize);
    using ForEachContextCallback = unsigned char (*)(const char* name, const IJSON* child,
                                                     void* user, IContext* context);

    // 3-7: text and comparison
    virtual unsigned char Interface_Parse(const char* text) = 0;
    virtual unsigned char Interface_LessThan(const IJSON* other) const = 0;
    virtual unsigned char Interface_Equals(const IJSON* other) const = 0;
    /// Writes the text (with a NUL) when its length is below `size`; returns length + 1.
    virtual unsigned long long Interface_ToString(const char* format, char* buffer,
                                                  unsigned long long size) const = 0;
    virtual unsigned long long Interface_ToCachedString(const char* format, char* buffer,
                                                        unsigned long long size) const = 0;
    // 8-12: lookups and size (results are new documents owned by the caller)
    virtual IJSON* Interface_FindNodePath(const char* path) const = 0;
    virtual IJSON* Interface_ElementMatchingString(const char* key, const char* value) const = 0;
    virtual IJSON* Interface_ElementMatchingDouble(const char* key, double value) const = 0;
    virtual unsigned long long Interface_Size() const = 0;
    virtual unsigned char Interface_Empty() const = 0;
    // 13-22: members of the root object, array elements
    virtual unsigned long long Interface_GetString(const char* key, char* buffer,
                                                   unsigned long long size,
                                                   unsigned char* found) const = 0;
    virtual unsigned char Interface_GetDouble(const char* key, double* out) const = 0;
    virtual unsigned char Interface_GetInt(const char* key, int* out) const = 0;
    virtual unsigned char Interface_GetUInt(const char* key, unsigned int* out) const = 0;
    virtual unsigned char Interface_GetInt64(const char* key, long long* out) const = 0;
    virtual unsigned char Interface_GetUInt64(const char* key, unsigned long long* out) const = 0;
    virtual unsigned char Interface_GetBoolean(const char* key, unsigned char* out) const = 0;
    virtual IJSON* Interface_Get(const char* key) const = 0;
    virtual unsigned char Interface_Has(const char* text) const = 0;
    virtual IJSON* Interface_At(unsigned long long index) const = 0;
    // 23-28: array and member changes
    virtual unsigned char Interface_PushBackBool(unsigned char value) = 0;
    virtual unsigned char Interface_PushBackString(const char* value) = 0;
    virtual unsigned char Interface_PushBackDouble(double value) = 0;
    virtual unsigned char Interface_PushBackJSON(const IJSON* value) = 0;
    virtual IJSON* Interface_RemoveIndex(unsigned long long index) = 0;
    virtual IJSON* Interface_RemoveKey(const char* key) = 0;
    // 29-35: the root as a scalar
    virtual unsigned char Interface_AsBool(unsigned char* out) const = 0;
    virtual unsigned char Interface_AsDouble(double* out) const = 0;
    virtual unsigned char Interface_AsInt(int* out) const = 0;
    virtual unsigned char Interface_AsUInt(unsigned int* out) const = 0;
    virtual unsigned char Interface_AsInt64(long long* out) const = 0;
    virtual unsigned char Interface_AsUInt64(unsigned long long* out) const = 0;
    virtual unsigned long long Interface_AsString(char* buffer, unsigned long long size,
                                                  unsigned char* copied) const = 0;
    // 36-46: type tests of the root
    virtual unsigned char Interface_IsNull() const = 0;
    virtual unsigned char Interface_IsBool() const = 0;
    virtual unsigned char Interface_IsNumber() const = 0;
    virtual unsigned char Interface_IsDouble() const = 0;
    virtual unsigned char Interface_IsInt() const = 0;
    virtual unsigned char Interface_IsUInt() const = 0;
    virtual unsigned char Interface_IsInt64() const = 0;
    virtual unsigned char Interface_IsUInt64() const = 0;
    virtual unsigned char Interface_IsString() const = 0;
    virtual unsigned char Interface_IsArray() const = 0;
    virtual unsigned char Interface_IsObject() const = 0;
    // 47-56: member setters (a null document becomes an object), element replacement
    virtual unsigned char Interface_SetBool(const char* key, unsigned char value) = 0;
    virtual unsigned char Interface_SetDouble(const char* key, double value) = 0;
    virtual unsigned char Interface_SetInt(const char* key, int value) = 0;
    virtual unsigned char Interface_SetUInt(const char* key, unsigned int value) = 0;
    virtual unsigned char Interface_SetInt64(const char* key, long long value) = 0;
    virtual unsigned char Interface_SetUInt64(const char* key, unsigned long long value) = 0;
    virtual unsigned char Interface_SetString(const char* key, const char* value) = 0;
    virtual unsigned char Interface_SetJSON(const char* key, const IJSON* value) = 0;
    virtual unsigned char Interface_SetNull(const char* key) = 0;
    virtual unsigned char Interface_ReplaceIndex(unsigned long long index, const IJSON* value) = 0;
    // 57-59: iteration over the root's children
    virtual unsigned char Interface_ForEach(ForEachContextCallback callback, void* user,
                                            IContext* context) const = 0;
    virtual unsigned char Interface_ForEach(ForEachCallback callback, void* user) const = 0;
    virtual unsigned char Interface_ForEach(ForEachErrorCallback callback, void* user, char* errors,
                                            unsigned int errorsSize) const = 0;
    // 60-63: copy and the serialized form (8-byte host-order length, then compact text)
    virtual IJSON* Interface_Clone() const = 0;
    virtual unsigned long long Interface_SerializedSize() const = 0;
    /// Bytes consumed, or all ones on failure.
    virtual unsigned long long Interface_Deserialize(const char* data, unsigned long long size) = 0;
    /// Bytes written, or all ones when the buffer is null or too small.
    virtual unsigned long long Interface_Serialize(char* buffer, unsigned long long size) const = 0;
    // 64-65: the last operation's outcome
    virtual unsigned int Interface_GetErrorStatus() const = 0;
    virtual unsigned long long Interface_GetErrorMessage(char* buffer, unsigned long long size,
                                                         unsigned char* copied) const = 0;
    virtual ~IJSON() = default;

    /// Reads the string member `key` into `out` (emptied first); returns whether it was found.
    bool GetString(const std::string& key, std::string& out) const {
        out.clear();
        unsigned char found = 0;
        // The operation writes length + 1 bytes when the length fits `size`: one spare byte.
        std::vector<char> buffer(1025);
        unsigned long long needed = Interface_GetString(key.c_str(), buffer.data(), 1024, &found);
        if (needed > 1023) {
            buffer.assign(static_cast<size_t>(needed) + 1, '\0');
            needed = Interface_GetString(key.c_str(), buffer.data(), needed, &found);
        }
        if (found && needed > 0) out.assign(buffer.data(), static_cast<size_t>(needed - 1));
        return found != 0;
    }
};

} // namespace Virelo
