#pragma once

// Everything is built with hidden visibility; MBQ_EXPORT marks what callers of the shared
// libraries may use. Classes whose type information crosses library borders (anything
// dynamic_cast, typeid-compared or thrown across a .so) must carry it too.
#define MBQ_EXPORT __attribute__((visibility("default")))
