// embed_host: a minimal host of the Virelo JSON module, step by step: load the module library,
// register its type, call a function, handle an error the module reports, and read a value
// through Virelo::IJSON. Run it with the module's path, or without to load the installed one.
#include "HostContext.h"
#include "HostVariant.h"
#include "ModuleLibrary.h"

#include <host/VireloIJSON.h>
#include <host/VireloInterfaces.h>

#include <exception>
#include <iostream>
#include <string>

using Virelo::AutoRefPtr;

namespace {

// A status word other than 0 names the argument that stopped the call and why:
// (1-based position << 16) | reason.
std::string DescribeStatus(unsigned int status) {
    const unsigned int reason = status & 0xFFFF;
    const char* why = reason == Virelo::kStatusMissing     ? "is missing"
                      : reason == Virelo::kStatusWrongType ? "has the wrong type"
                      : reason == Virelo::kStatusNoObject  ? "holds no value"
                                                           : "was refused";
    return "status " + std::to_string(status) + ", argument " + std::to_string(status >> 16) + ' ' +
           why;
}

// The compact text of a JSON value, through the module's own ToString.
std::string ToText(const embed::ModuleLibrary& module, embed::Context& context,
                   Virelo::IVariant* json) {
    AutoRefPtr<embed::Variant> text = embed::Variant::Create();
    const unsigned int status =
        module.Call(module.FindFunction("ToString (JSON)"), {json}, text.Get(), context);
    if (status != 0) return DescribeStatus(status);
    return std::string(text->Interface_GetStringData(), text->Interface_GetStringLength());
}

// IJSON hands out texts by one convention: it returns the length + 1 and copies the text with
// its NUL only when that fits the buffer; so ask once, and again with the size it needs.
std::string ErrorMessage(const Virelo::IJSON& json) {
    std::string message(64, '\0');
    unsigned char copied = 0;
    const unsigned long long needed =
        json.Interface_GetErrorMessage(message.data(), message.size(), &copied);
    message.resize(static_cast<size_t>(needed));
    if (!copied) json.Interface_GetErrorMessage(message.data(), message.size(), &copied);
    message.resize(static_cast<size_t>(needed) - 1);
    return message;
}

int Run(const std::string& modulePath) {
    // 1. Load. The library is declared first, so it is unloaded last: after every variant,
    // value and document below has released what the module made.
    embed::ModuleLibrary module(modulePath);
    std::cout << "loaded " << module.Metadata("GetVireloModuleName") << ' '
              << module.Metadata("GetModuleVersion") << " with " << module.FunctionCount()
              << " functions\n";

    // 2. Register the module's type: the context answers Interface_GetTypeId("JSON") with the
    // id the host chose, for as long as the module is loaded.
    AutoRefPtr<embed::Context> context = embed::Context::Create();
    const unsigned int jsonType = context->RegisterType("JSON");
    const embed::TypeFactory createJson = module.FindTypeFactory("JSON");
    {
        // A new script variable of type JSON holds the factory's value: null.
        AutoRefPtr<embed::Variant> fresh = embed::Variant::EmptyOf(jsonType);
        AutoRefPtr<Virelo::IUserDefinedType> value(createJson(jsonType, context.Get()));
        fresh->Interface_SetUserDefined(value.Get());
        std::cout << "new " << value->Interface_GetTypeName()
                  << " value: " << ToText(module, *context, fresh.Get()) << '\n';
    }

    // 3. Call a function: JSON.FromString fills the result variant with a JSON value.
    const Virelo::VireloFunction fromString = module.FindFunction("JSON.FromString (STRING)");
    AutoRefPtr<embed::Variant> text =
        embed::Variant::FromString(R"({"name":"demo","tags":["json","msgpack"],"size":2})");
    AutoRefPtr<embed::Variant> doc = embed::Variant::EmptyOf(jsonType);
    unsigned int status = module.Call(fromString, {text.Get()}, doc.Get(), *context);
    std::cout << "JSON.FromString: status " << status << ", " << ToText(module, *context, doc.Get())
              << '\n';

    // 4. Errors. A failing function reports through the context's error trigger and leaves
    // the result without a value; passing that on gives a status word instead.
    AutoRefPtr<embed::Variant> broken = embed::Variant::FromString("{broken");
    AutoRefPtr<embed::Variant> none = embed::Variant::EmptyOf(jsonType);
    status = module.Call(fromString, {broken.Get()}, none.Get(), *context);
    for (const embed::ErrorReport& report : context->TakeReports())
        std::cout << "reported: severity " << report.fSeverity << ", " << report.fSource << ' '
                  << report.fId << ": " << report.fMessage << '\n';
    AutoRefPtr<Virelo::IUserDefinedType> noValue(none->Interface_GetUserDefined());
    std::cout << "JSON.FromString: status " << status << ", " << (noValue ? "a value" : "no value")
              << '\n';
    std::cout << "ToString of it: " << ToText(module, *context, none.Get()) << '\n';

    // 5. Virelo::IJSON: a JSON value hands out a document sharing its tree.
    AutoRefPtr<Virelo::IUserDefinedType> value(doc->Interface_GetUserDefined());
    AutoRefPtr<Virelo::IJSON> json(value->Interface_Serialize());
    std::string name;
    double size = 0;
    json->GetString("name", name);
    json->Interface_GetDouble("size", &size);
    AutoRefPtr<Virelo::IJSON> tags(json->Interface_Get("tags"));
    std::cout << "IJSON: name " << name << ", size " << size << ", " << tags->Interface_Size()
              << " tags\n";
    // A failed operation sets the document's error status (2: error) and message.
    double notANumber = 0;
    json->Interface_GetDouble("name", &notANumber);
    std::cout << "IJSON GetDouble(\"name\"): status " << json->Interface_GetErrorStatus() << ", "
              << ErrorMessage(*json) << '\n';
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc > 1 ? argv[1] : VIRELO_JSON_MODULE);
    } catch (const std::exception& e) {
        std::cerr << "embed_host: " << e.what() << '\n';
        return 1;
    }
}
