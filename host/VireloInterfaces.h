// The Virelo host SDK: the interfaces between the host runtime and a loadable module. Both
// sides include this header, so the operation order below is the binary contract. Every
// interface is reference counted through IObject; a getter that returns an interface pointer
// hands out one reference for the caller unless its comment says otherwise.
#pragma once

#include "host/AutoRefPtr.h"

#include <string>
#include <type_traits>

namespace Virelo {

class IContext;
class IDataRef;
class IJSON;
class ILogger;
class IModuleInfo;
class IUserDefinedType;
class IVariant;

/// Severity passed to the error trigger.
enum ErrorSeverity : unsigned int {
    eSeverityRecoverable = 1, ///< an ordinary failure the script can handle
    eSeveritySevere = 2,      ///< an exception inside a module or a failed host-function call
};

/// Type codes returned by IVariant::Interface_GetType.
enum EVariantType : unsigned int {
    eTypeNone = 0,         ///< no value
    eTypeBoolean = 1,
    eTypeNumber = 5,       ///< double
    eTypeString = 9,
    eTypeDataRef = 13,     ///< IDataRef
    eTypeVector = 17,      ///< IVector<T>; the element type follows from the signature
    eTypeUserDefined = 21, ///< first id of user-defined types; every module type is >= 21
};

/// The host calling convention of every exported and imported script function: returns the
/// call status word, 0 on success, else (1-based parameter position << 16) | reason with the
/// reasons 1 missing, 2 wrong type or null, 4 user-defined argument without object.
using VireloFunction = unsigned int (*)(unsigned int argumentCount, IVariant** arguments,
                                        IVariant* result, IModuleInfo* moduleInfo,
                                        IContext* context);
constexpr unsigned int kStatusMissing = 1;
constexpr unsigned int kStatusWrongType = 2;
constexpr unsigned int kStatusNoObject = 4;

/// Reference counting, the base of every interface.
class IObject {
public:
    virtual void Interface_AddRef() const = 0;
    /// Drops one reference; 1 when this destroyed the object, else 0.
    virtual unsigned int Interface_Release() const = 0;
    virtual unsigned int Interface_GetCount() const = 0;

protected:
    ~IObject() = default; // objects destroy themselves in Interface_Release
};

/// Opaque information about the module that provides a function; handed through unchanged.
class IModuleInfo : public IObject {
public:
    virtual ~IModuleInfo() = default;
};

/// A byte buffer.
class IDataRef : public IObject {
public:
    virtual unsigned long long Interface_GetSize() const = 0;
    /// Replaces the bytes with a copy of `size` bytes from `data`.
    virtual void Interface_Assign(const char* data, unsigned long long size) = 0;
    /// Copies up to `size` bytes from `offset`; returns the number copied (0 at or past the end).
    virtual unsigned long long Interface_Read(char* target, unsigned long long size,
                                              unsigned long long offset) const = 0;
    virtual bool Interface_IsEqual(IDataRef* other) const = 0;
    virtual IDataRef* Interface_Clone() const = 0;
    /// A direct pointer to the bytes, or null when the buffer offers none (use Interface_Read).
    virtual const char* Interface_GetData() const = 0;
    virtual ~IDataRef() = default;
};

/// A host vector of booleans (T = bool), numbers (double) or strings (std::string).
template <class T> class IVector : public IObject {
public:
    virtual unsigned long long Interface_Size() const = 0;
    /// Element `index` as a new variant, or null out of range.
    virtual IVariant* Interface_At(unsigned long long index) const = 0;
    virtual void Interface_PushBack(const T& value) = 0;
    virtual ~IVector() = default;
};

/// One script value passed into or out of a call.
class IVariant : public IObject {
public:
    virtual unsigned int Interface_GetType() const = 0;
    /// Any non-zero byte is true.
    virtual unsigned char Interface_GetBoolean() const = 0;
    virtual double Interface_GetNumber() const = 0;
    /// The string's bytes, NUL-terminated (the length may count embedded zero bytes).
    virtual const char* Interface_GetStringData() const = 0;
    virtual unsigned long long Interface_GetStringLength() const = 0;
    virtual IDataRef* Interface_GetDataRef() const = 0;
    virtual IUserDefinedType* Interface_GetUserDefined() const = 0;
    /// The variant's vector (an IVector<T> of the signature's element type), or null.
    virtual IObject* Interface_GetVector() const = 0;
    virtual void Interface_SetBoolean(unsigned char value) = 0;
    virtual void Interface_SetNumber(double value) = 0;
    /// Copies `length` bytes; (null, 0) makes the empty string.
    virtual void Interface_SetString(const char* data, unsigned long long length) = 0;
    /// The variant takes its own reference (null clears it).
    virtual void Interface_SetDataRef(IDataRef* data) = 0;
    /// The variant takes its own reference; the type stays user-defined when null.
    virtual void Interface_SetUserDefined(IUserDefinedType* object) = 0;
    /// The variant takes its own reference to a host vector.
    virtual void Interface_SetVector(IObject* vector) = 0;
    virtual ~IVariant() = default;
};

/// A value of a module-defined script type.
class IUserDefinedType : public IObject {
public:
    /// The type's name, e.g. "JSON"; valid while the object lives. No reference involved.
    virtual const char* Interface_GetTypeName() const = 0;
    virtual IUserDefinedType* Interface_Clone() const = 0;
    virtual unsigned int Interface_GetType() const = 0;
    virtual bool Interface_LessThan(const IUserDefinedType* other) const = 0;
    /// Takes the value over from a document; forwards to the form with a null context.
    virtual bool Interface_Deserialize(const IJSON* json) { return Interface_Deserialize(json, nullptr); }
    /// The default refuses a null context and otherwise uses the one-argument form. A type
    /// overrides one of the two.
    virtual bool Interface_Deserialize(const IJSON* json, IContext* context) {
        return context ? Interface_Deserialize(json) : false;
    }
    /// The value as a new document; forwards to the form with a null context.
    virtual IJSON* Interface_Serialize() const { return Interface_Serialize(nullptr); }
    virtual IJSON* Interface_Serialize(IContext* context) const {
        return context ? Interface_Serialize() : nullptr;
    }
    /// Takes the value from binary data of the given format; 0 when refused.
    virtual unsigned long long Interface_FromBinaryData(const void*, unsigned long long,
                                                        unsigned long long) {
        return 0;
    }
    /// Hands out binary data of the given format; the size, or 0 when refused.
    virtual unsigned long long Interface_ToBinaryData(void**, unsigned long long) const { return 0; }
    virtual ~IUserDefinedType() = default;
};

/// The host's type object for a registered type id.
class ITypeObject : public IObject {
public:
    /// A new instance (one reference for the caller), or null.
    virtual IUserDefinedType* Interface_CreateInstance() = 0;
    virtual ~ITypeObject() = default;
};

/// Receives log messages.
class ILogger : public IObject {
public:
    virtual void Interface_DebugLog(const char* text, unsigned char level, const char* detail,
                                    unsigned int contextValue, IContext* context) = 0;
    virtual void Interface_ErrorLog(const char* text, const char* detail, unsigned int contextValue,
                                    IContext* context) = 0;
    virtual ~ILogger() = default;
};

/// The context of the current script call.
class IContext : public IObject {
public:
    /// Reports an error to the script: severity, source ("JSON", "Virelo"), error id, message.
    virtual void Interface_TriggerError(unsigned int severity, const char* source,
                                        const char* errorId, const char* message) = 0;
    /// The id of a registered type, 0 when the name is unknown.
    virtual unsigned int Interface_GetTypeId(const char* typeName) = 0;
    /// The type object of a registered id, or null.
    virtual ITypeObject* Interface_GetTypeObject(unsigned int typeId) = 0;
    /// The logger, or null.
    virtual ILogger* Interface_GetLogger() = 0;
    /// The value handed to the logger with every message (the call's line number).
    virtual unsigned int Interface_GetLoggerValue() const = 0;
    /// Writes the call-stack text (NUL-terminated when it fits) into `buffer`; returns the
    /// length the whole text needs, without the NUL.
    virtual unsigned long long Interface_GetCallStack(char* buffer, unsigned long long size) = 0;
    /// A new empty host vector of booleans (eTypeBoolean), numbers (eTypeNumber) or strings
    /// (eTypeString), or null for another code.
    virtual IObject* Interface_CreateVector(unsigned int elementType) = 0;
    /// A new empty variant, for calling host functions.
    virtual IVariant* Interface_CreateVariant() = 0;
    /// Whether an error has been triggered and not reset.
    virtual bool Interface_HasError() const = 0;
    /// Writes the last error's text like Interface_GetCallStack; returns the length it needs.
    virtual unsigned long long Interface_GetErrorText(char* buffer, unsigned long long size) const = 0;
    virtual void Interface_ResetError() = 0;
    /// Whether the script run was interrupted.
    virtual bool Interface_IsInterrupted() const = 0;
    /// Identifies the host interface generation; imported-function handles are valid per id.
    virtual unsigned int Interface_GetInterfaceId() const = 0;
    /// A loaded function by name and exact signature (type names, return type first, the list
    /// ended by ""); fills `moduleInfo` with its provider (no reference). Null when none.
    virtual VireloFunction Interface_GetFunction(const char* name, unsigned int typeCount,
                                                 const char* const* types,
                                                 IModuleInfo*& moduleInfo) = 0;
    virtual ~IContext() = default;

    // ---- Helpers over the operations above ----

    /// Passes the three texts to the error trigger.
    void TriggerErrorHandler(ErrorSeverity severity, const std::string& source,
                             const std::string& errorId, const std::string& message) {
        Interface_TriggerError(severity, source.c_str(), errorId.c_str(), message.c_str());
    }
    /// Error log through the context's logger; silent without one.
    void ErrorLog(const char* text, const char* detail) {
        AutoRefPtr<ILogger> logger(Interface_GetLogger());
        if (!logger) return;
        const unsigned int value = Interface_GetLoggerValue();
        AutoRefPtr<IContext> self = AutoRefPtr<IContext>::Share(this);
        logger->Interface_ErrorLog(text, detail, value, this);
    }
    /// Debug log through the context's logger; silent without one.
    void DebugLog(const char* text, unsigned char level, const char* detail) {
        AutoRefPtr<ILogger> logger(Interface_GetLogger());
        if (!logger) return;
        const unsigned int value = Interface_GetLoggerValue();
        AutoRefPtr<IContext> self = AutoRefPtr<IContext>::Share(this);
        logger->Interface_DebugLog(text, level, detail, value, this);
    }
    /// The call-stack text: asked into 1000 characters first, again with the size it needs.
    std::string PrintCallStack() {
        std::string text(1000, '\0');
        const unsigned long long needed = Interface_GetCallStack(text.data(), text.size());
        if (needed > text.size()) {
            text.resize(static_cast<size_t>(needed));
            Interface_GetCallStack(text.data(), text.size());
        }
        text.resize(static_cast<size_t>(needed));
        return text;
    }
};

/// Finds a loaded host function by name and exact signature; see IContext::Interface_GetFunction.
inline VireloFunction GetFunction_(IContext* context, const char* name, unsigned int typeCount,
                                   const char* const* types, IModuleInfo*& moduleInfo) {
    if (!context || !name) return nullptr;
    return context->Interface_GetFunction(name, typeCount, types, moduleInfo);
}

/// True for the smart-pointer types of module types that may be created through the host's
/// type registry (CreateUserDefinedType). Modules specialise it for their own types.
template <class T> struct is_importtype : std::false_type {};

} // namespace Virelo
