#include "KTRFunctionality/KTRManagers.h"

namespace KTR {

// Out of line so that each interface's vtable and type information live once, in this
// library, and dynamic_cast works across the libraries that implement them.
KTRTEM::~KTRTEM() = default;
KTREnvM::~KTREnvM() = default;
KTRPkgM::~KTRPkgM() = default;
KTRNetworkM::~KTRNetworkM() = default;
KTRProcessMonitor::~KTRProcessMonitor() = default;
KTRProcessM::~KTRProcessM() = default;
KTRUp2date::~KTRUp2date() = default;
KTRSupport::~KTRSupport() = default;
KTRSampleM::~KTRSampleM() = default;

}  // namespace KTR
