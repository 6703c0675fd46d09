// The glue between the host's calling convention and plain typed worker functions: argument
// conversion with the call status word, result setting, and the result conversion of imported
// host functions.
//
// What an exported call leaves behind:
// - A missing or mistyped argument: the worker is not called, the status word is returned and a
//   plain result (string, boolean, number, data) is set to its empty value; a JSON or vector
//   result variant is left untouched (deliberately).
// - An exception escaping a worker: reported as severity 2, "JSON", "Error.JSON.Exception"
//   with its text; the call returns 0 with the same empty result. No exception reaches the host.
#pragma once

#include "host/JSONObj.h"
#include "host/VireloInterfaces.h"

#include <exception>
#include <string>
#include <tuple>
#include <type_traits>

namespace Virelo {

using StringVectorPtr = AutoRefPtr<const IVector<std::string>>;
using BoolVectorPtr = AutoRefPtr<const IVector<bool>>;
using NumberVectorPtr = AutoRefPtr<const IVector<double>>;
using DataRefPtr = AutoRefPtr<IDataRef>;

/// The conversion state of one call: applied to each worker parameter in order, it converts the
/// next argument or records why it cannot ((1-based position << 16) | reason). Once the status
/// is non-zero, later parameters are not looked at.
class CPPNameParameterTransformer {
public:
    CPPNameParameterTransformer(IContext* context, IModuleInfo* moduleInfo, IVariant** arguments,
                                unsigned int argumentCount) noexcept
        : fContext(context), fModuleInfo(moduleInfo), fArguments(arguments),
          fArgumentCount(argumentCount) {}

    void operator()(JSONObjPtr& out);
    void operator()(std::string& out);
    void operator()(bool& out);
    void operator()(double& out);
    void operator()(unsigned long& out);
    void operator()(unsigned long long& out);
    void operator()(DataRefPtr& out);
    void operator()(StringVectorPtr& out) { TakeVector(out); }
    void operator()(BoolVectorPtr& out) { TakeVector(out); }
    void operator()(NumberVectorPtr& out) { TakeVector(out); }
    /// The call context is not an argument: the worker receives the call's context.
    void operator()(IContext*& out) noexcept { out = fContext; }

    unsigned int fStatus = 0;
    int fIndex = -1;
    IContext* fContext;
    IModuleInfo* fModuleInfo;
    IVariant** fArguments;
    unsigned int fArgumentCount;

private:
    /// The next argument when its type code is `accepted`; otherwise null with the status set.
    IVariant* Next(unsigned int accepted);
    /// Moves to the next parameter; null (status "missing") when there is no argument for it.
    bool Advance();
    /// Records why the current argument does not fit.
    void Mismatch(IVariant* argument);
    template <class T> void TakeVector(AutoRefPtr<const IVector<T>>& out) {
        if (fStatus || !Advance()) return;
        IVariant* argument = fArguments ? fArguments[fIndex] : nullptr;
        IObject* vector = argument ? argument->Interface_GetVector() : nullptr;
        if (!vector) return Mismatch(argument);
        out = AutoRefPtr<const IVector<T>>(static_cast<const IVector<T>*>(vector));
    }
};

/// A number argument as an unsigned 64-bit index: truncated toward zero; negative numbers give
/// the two's complement of the truncated value; NaN gives 0 and larger values saturate.
unsigned long long NumberToUnsigned(double number) noexcept;

// MARK: - Results

template <class R> struct CPPResult;

template <> struct CPPResult<std::string> {
    static void Set(IVariant* result, const std::string& value) {
        result->Interface_SetString(value.data(), value.size());
    }
    static void SetEmpty(IVariant* result) { result->Interface_SetString(nullptr, 0); }
};
template <> struct CPPResult<bool> {
    static void Set(IVariant* result, bool value) { result->Interface_SetBoolean(value ? 1 : 0); }
    static void SetEmpty(IVariant* result) { result->Interface_SetBoolean(0); }
};
template <class N> struct CPPNumberResult {
    static void Set(IVariant* result, N value) {
        result->Interface_SetNumber(static_cast<double>(value));
    }
    static void SetEmpty(IVariant* result) { result->Interface_SetNumber(0.0); }
};
template <> struct CPPResult<double> : CPPNumberResult<double> {};
template <> struct CPPResult<long long> : CPPNumberResult<long long> {};
template <> struct CPPResult<unsigned long> : CPPNumberResult<unsigned long> {};
template <> struct CPPResult<unsigned long long> : CPPNumberResult<unsigned long long> {};
template <> struct CPPResult<DataRefPtr> {
    static void Set(IVariant* result, const DataRefPtr& value) {
        result->Interface_SetDataRef(value.Get());
    }
    static void SetEmpty(IVariant* result) { result->Interface_SetDataRef(nullptr); }
};
template <> struct CPPResult<JSONObjPtr> {
    static void Set(IVariant* result, const JSONObjPtr& value) {
        if (value) result->Interface_SetUserDefined(value.Get());
    }
    static void SetEmpty(IVariant*) {}
};
template <class T> struct CPPResult<AutoRefPtr<const IVector<T>>> {
    static void Set(IVariant* result, const AutoRefPtr<const IVector<T>>& value) {
        if (value) result->Interface_SetVector(const_cast<IVector<T>*>(value.Get()));
    }
    static void SetEmpty(IVariant*) {}
};

/// Reports an exception that escaped a worker (nothing without a context).
void ReportWorkerException(IContext* context, const char* what) noexcept;

// MARK: - Drivers

/// Drives one exported call of `worker` (result type R): converts the arguments, calls the
/// worker when all fit, sets the result and returns the status word. Never throws.
template <class R> class CPPNameFunctionCaller {
public:
    CPPNameFunctionCaller(IVariant** arguments, unsigned int argumentCount, IVariant* result,
                          IContext* context, IModuleInfo* moduleInfo) noexcept
        : fArguments(arguments), fArgumentCount(argumentCount), fResult(result),
          fContext(context), fModuleInfo(moduleInfo) {}

    template <class... Params> unsigned int Call(R (*worker)(Params...)) const noexcept {
        try {
            CPPNameParameterTransformer transform(fContext, fModuleInfo, fArguments, fArgumentCount);
            std::tuple<std::decay_t<Params>...> values;
            std::apply([&transform](auto&... value) { (transform(value), ...); }, values);
            if (transform.fStatus) {
                if (fResult) CPPResult<R>::SetEmpty(fResult);
                return transform.fStatus;
            }
            const R value = std::apply(worker, values);
            if (fResult) CPPResult<R>::Set(fResult, value);
        } catch (const std::exception& e) {
            Recover(e.what());
        } catch (...) {
            Recover("unknown exception");
        }
        return 0;
    }

private:
    void Recover(const char* what) const noexcept {
        ReportWorkerException(fContext, what);
        try {
            if (fResult) CPPResult<R>::SetEmpty(fResult);
        } catch (...) {
        }
    }

    IVariant** fArguments;
    unsigned int fArgumentCount;
    IVariant* fResult;
    IContext* fContext;
    IModuleInfo* fModuleInfo;
};

template <class R> struct CPPNameFunctionForward {
    template <class... Params>
    static unsigned int Call(R (*worker)(Params...), unsigned int argumentCount,
                             IVariant** arguments, IVariant* result, IModuleInfo* moduleInfo,
                             IContext* context) noexcept {
        return CPPNameFunctionCaller<R>(arguments, argumentCount, result, context, moduleInfo)
            .Call(worker);
    }
};

template <class F> struct WorkerResult;
template <class R, class... Params> struct WorkerResult<R (*)(Params...)> {
    using Type = R;
};

/// The exported wrapper of a worker: `Forward<&Worker>` has the host calling convention.
template <auto Worker>
unsigned int Forward(unsigned int argumentCount, IVariant** arguments, IVariant* result,
                     IModuleInfo* moduleInfo, IContext* context) noexcept {
    return CPPNameFunctionForward<typename WorkerResult<decltype(Worker)>::Type>::Call(
        Worker, argumentCount, arguments, result, moduleInfo, context);
}

// MARK: - Results of imported host functions

/// Creates a value of a module type through the host's type registry; null when the name or
/// context is null, the type is unknown or any step yields nothing. Reports nothing.
template <class T>
std::enable_if_t<is_importtype<T>::value, T> CreateUserDefinedType(const char* typeName,
                                                                   IContext* context);

template <> inline JSONObjPtr CreateUserDefinedType<JSONObjPtr>(const char* typeName, IContext* context) {
    if (!typeName || !context) return nullptr;
    const unsigned int typeId = context->Interface_GetTypeId(typeName);
    if (!typeId) return nullptr;
    AutoRefPtr<ITypeObject> type(context->Interface_GetTypeObject(typeId));
    if (!type) return nullptr;
    AutoRefPtr<IUserDefinedType> instance(type->Interface_CreateInstance());
    if (!JSONObj::IsJSONObj(instance.Get())) return nullptr;
    return JSONObjPtr(static_cast<JSONObj*>(instance.Detach()));
}

template <class T> class CPPReturnType;

/// A JSON result: the variant's object, or a fresh "JSON" when it carries none.
template <> class CPPReturnType<JSONObjPtr> {
public:
    explicit CPPReturnType(IContext* context) : fContext(context) {}
    void Set(const AutoRefPtr<IVariant>& variant) {
        AutoRefPtr<IUserDefinedType> object(variant ? variant->Interface_GetUserDefined() : nullptr);
        if (JSONObj::IsJSONObj(object.Get())) {
            fValue = JSONObjPtr(static_cast<JSONObj*>(object.Detach()));
        } else {
            fValue = CreateUserDefinedType<JSONObjPtr>("JSON", fContext);
        }
    }
    JSONObjPtr fValue;

private:
    IContext* fContext;
};

/// A string result: the variant's bytes.
template <> class CPPReturnType<std::string> {
public:
    explicit CPPReturnType(IContext*) {}
    void Set(const AutoRefPtr<IVariant>& variant) {
        if (!variant) return;
        const char* data = variant->Interface_GetStringData();
        fValue.assign(data ? data : "", data ? static_cast<size_t>(variant->Interface_GetStringLength()) : 0);
    }
    std::string fValue;
};

} // namespace Virelo
