// The exported script functions: virelo_module_SYMBOL runs its worker through the forwarding
// glue (argument conversion, status word, result, exceptions caught). One per table row.
#include "host/CallForwarding.h"
#include "module/FunctionTable.h"
#include "module/ModuleExport.h"
#include "module/ScriptFunctions.h"

#define VIRELO_JSON_EXPORT(scriptName, symbol, worker)                                        \
    VIRELO_JSON_API unsigned int virelo_module_##symbol(                                      \
        unsigned int argumentCount, Virelo::IVariant** arguments, Virelo::IVariant* result,   \
        Virelo::IModuleInfo* moduleInfo, Virelo::IContext* context) {                         \
        return Virelo::Forward<&JsonModule::worker>(argumentCount, arguments, result,         \
                                                    moduleInfo, context);                     \
    }

VIRELO_JSON_FUNCTIONS(VIRELO_JSON_EXPORT)
