#include "KTRFunctionality/KTRLibFunctionality.h"

namespace KTR {

const char* const kModuleName = "KTRFunctionality";

const char* ktrLibraryVersion() { return "7.0"; }

}  // namespace KTR
