// Declarations of the module's exported script functions, one per row of the function table,
// for the tests and fuzz targets that call them as a host would.
#pragma once

#include "host/VireloInterfaces.h"
#include "module/FunctionTable.h"

/// The signature every exported script function shares.
using ExportedFunction = unsigned int (*)(unsigned int, Virelo::IVariant**, Virelo::IVariant*,
                                          Virelo::IModuleInfo*, Virelo::IContext*);

#define VIRELO_JSON_DECLARE_EXPORT(name, symbol, worker)                                           \
    extern "C" unsigned int virelo_module_##symbol(unsigned int, Virelo::IVariant**,               \
                                                   Virelo::IVariant*, Virelo::IModuleInfo*,        \
                                                   Virelo::IContext*);
VIRELO_JSON_FUNCTIONS(VIRELO_JSON_DECLARE_EXPORT)
#undef VIRELO_JSON_DECLARE_EXPORT
