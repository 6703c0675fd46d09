// The imported host functions and their handle cache.
#include "host/ijson/ImportedFunctions.h"
#include "host/ijson/WrapperSupport.h"
#include "host/FixedTexts.h"

#include <initializer_list>
#include <mutex>
#include <vector>

namespace Virelo::JSON {

namespace {

/// The level of the debug-log line written when the context is in trouble after a call.
constexpr unsigned char kCallTroubleLogLevel = 1;

/// One imported function: its looked-up name, the alias used in messages, its signature (return
/// type first, ended by "") and the cached handle.
class ImportedFunction {
public:
    ImportedFunction(const char* name, const char* alias, std::initializer_list<const char*> types)
        : fName(name), fAlias(alias), fTypes(types) {}

    /// Calls the function with `arguments`; the result variant, or null with the failure
    /// reported on the context.
    AutoRefPtr<IVariant> Call(IContext& context, IVariant** arguments, unsigned int count) {
        IModuleInfo* moduleInfo = nullptr;
        const VireloFunction function = Resolve(context, moduleInfo);
        if (!function) {
            context.TriggerErrorHandler(eSeveritySevere, Texts::kSourceVirelo, Texts::kErrorInvalidFunction,
                                        "Imported Virelo function " + fName + " (imported as " +
                                            fAlias + ") doesn't exist!");
            return nullptr;
        }
        AutoRefPtr<IVariant> result(context.Interface_CreateVariant());
        if (!result) return nullptr;
        const unsigned int status = function(count, arguments, result.Get(), moduleInfo, &context);
        if (context.Interface_HasError()) {
            LogTrouble(context, ", context has error \"" + Support::ContextErrorText(context) +
                                    "\", backtrace: ");
        } else if (context.Interface_IsInterrupted()) {
            LogTrouble(context, ", context is already interrupted, backtrace: ");
        }
        if (status) {
            const std::string where = " in function '" + fName + "'";
            const unsigned int position = status >> 16;
            std::string message;
            switch (status & 0xFFFF) {
            case kStatusNoObject:
                message = "invalid object used for parameter " + std::to_string(position) + where;
                break;
            case kStatusWrongType:
                message = "invalid parameter " + std::to_string(position) + where;
                break;
            default:
                message = "runtime error from function '" + fName + "'";
                break;
            }
            context.TriggerErrorHandler(eSeveritySevere, Texts::kSourceVirelo, Texts::kErrorInvalidArgument,
                                        message);
            return nullptr;
        }
        return result;
    }

private:
    /// The handle for the context's host interface generation, or null. Looked up again when
    /// the generation changed or nothing was found before (a provider may be loaded later).
    VireloFunction Resolve(IContext& context, IModuleInfo*& moduleInfo) {
        std::lock_guard lock(fMutex);
        const unsigned int interfaceId = context.Interface_GetInterfaceId();
        if (!fFunction || interfaceId != fInterfaceId) {
            IModuleInfo* info = nullptr;
            fFunction = GetFunction_(&context, fName.c_str(),
                                     static_cast<unsigned int>(fTypes.size()), fTypes.data(), info);
            fModuleInfo = info;
            fInterfaceId = interfaceId;
        }
        moduleInfo = fModuleInfo;
        return fFunction;
    }

    void LogTrouble(IContext& context, const std::string& state) {
        const std::string text = "Error calling imported Virelo function " + fName +
                                 " (imported as " + fAlias + ")" + state + context.PrintCallStack();
        context.DebugLog(Texts::kSourceVirelo, kCallTroubleLogLevel, text.c_str());
    }

    const std::string fName;
    const std::string fAlias;
    const std::vector<const char*> fTypes;

    std::mutex fMutex;
    unsigned int fInterfaceId = 0;
    IModuleInfo* fModuleInfo = nullptr; // the provider's information; no reference is held
    VireloFunction fFunction = nullptr;
};

/// A script "JSON" object from a result variant; a fresh one from the type registry when the
/// variant carries none.
AutoRefPtr<IUserDefinedType> ObjectOf(const AutoRefPtr<IVariant>& result, IContext& context) {
    AutoRefPtr<IUserDefinedType> object(result->Interface_GetUserDefined());
    if (object) return object;
    const unsigned int typeId = context.Interface_GetTypeId(Texts::kTypeName);
    if (!typeId) return nullptr;
    AutoRefPtr<ITypeObject> type(context.Interface_GetTypeObject(typeId));
    return type ? AutoRefPtr<IUserDefinedType>(type->Interface_CreateInstance()) : nullptr;
}

AutoRefPtr<IVariant> NewVariant(IContext& context) {
    return AutoRefPtr<IVariant>(context.Interface_CreateVariant());
}

} // namespace

AutoRefPtr<IUserDefinedType> JSON_CreateEmptyObject(IContext* context) {
    if (!context) return nullptr;
    try {
        static ImportedFunction sFunction("JSON.CreateEmptyObject", "JSON_CreateEmptyObject",
                                          {"JSON", ""});
        AutoRefPtr<IVariant> result = sFunction.Call(*context, nullptr, 0);
        return result ? ObjectOf(result, *context) : nullptr;
    } catch (...) {
        return nullptr;
    }
}

AutoRefPtr<IUserDefinedType> JSON_FromString(const std::string& text, IContext* context) {
    if (!context) return nullptr;
    try {
        static ImportedFunction sFunction("JSON.FromString", "JSON_FromString",
                                          {"JSON", "STRING", ""});
        AutoRefPtr<IVariant> argument = NewVariant(*context);
        if (!argument) return nullptr;
        argument->Interface_SetString(text.data(), text.size());
        IVariant* arguments[] = {argument.Get()};
        AutoRefPtr<IVariant> result = sFunction.Call(*context, arguments, 1);
        return result ? ObjectOf(result, *context) : nullptr;
    } catch (...) {
        return nullptr;
    }
}

std::string JSON_ToString(const AutoRefPtr<IUserDefinedType>& object, IContext* context) {
    if (!context) return std::string();
    try {
        static ImportedFunction sFunction("ToString", "JSON_ToString", {"STRING", "JSON", ""});
        AutoRefPtr<IVariant> argument = NewVariant(*context);
        if (!argument) return std::string();
        argument->Interface_SetUserDefined(object.Get());
        IVariant* arguments[] = {argument.Get()};
        AutoRefPtr<IVariant> result = sFunction.Call(*context, arguments, 1);
        if (!result) return std::string();
        const char* data = result->Interface_GetStringData();
        return data ? std::string(data, static_cast<size_t>(result->Interface_GetStringLength()))
                    : std::string();
    } catch (...) {
        return std::string();
    }
}

} // namespace Virelo::JSON
