#pragma once

// Shared between the configuration record and the container-record source that builds the
// library's load-time objects in their fixed order; not installed.

#include "MBQCore/MBQLock.h"

namespace KTR {

// Guards the one-time build of the configuration's element-order table.
extern MBQ::MBQLock ktrPositionTableLock;

}  // namespace KTR
