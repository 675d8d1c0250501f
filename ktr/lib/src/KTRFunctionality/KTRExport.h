#pragma once

// Marks what callers of libKTRFunctionality use; everything else stays hidden.
#define KTR_EXPORT __attribute__((visibility("default")))
