#pragma once

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

// The module name under which the library logs.
extern KTR_EXPORT const char* const kModuleName;

// The library's version, "7.0"; its soname carries the major number.
extern "C" KTR_EXPORT const char* ktrLibraryVersion();

}  // namespace KTR
