// Helpers shared by the script functions.
#include "module/ModuleSupport.h"

namespace JsonModule {

unsigned int JsonTypeId(IContext* context) {
    static const unsigned int typeId = context ? context->Interface_GetTypeId(kJSONName) : 0;
    return typeId;
}

JSONObjPtr NewJSON(IContext* context, JsonAutoRefPtr<JsonValue> value) {
    JSONObjPtr json(new JSONObj(JsonTypeId(context), context));
    json->SetValue(std::move(value));
    return json;
}

JSONObjPtr NewJSON(IContext* context, JsonValue::EJsonValueType type) {
    return JSONObjPtr(new JSONObj(JsonTypeId(context), type, context));
}

JSONObjPtr CopyOf(const JSONObjPtr& json) {
    return JSONObjPtr(static_cast<JSONObj*>(json->Interface_Clone()));
}

void Report(IContext* context, Virelo::ErrorSeverity severity, const char* errorId,
            const std::string& message) {
    if (context) context->TriggerErrorHandler(severity, kJSONName, errorId, message);
}

} // namespace JsonModule
