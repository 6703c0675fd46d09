// Marks the few symbols the module library exports; everything else is hidden.
#pragma once

#define VIRELO_JSON_API extern "C" __attribute__((visibility("default")))
