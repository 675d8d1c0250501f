#pragma once

// What the shared cache's operations answer (docs/template-cache.md, "Codes"). Entry operations
// add 1 (no such key) and -1 (no room, or a value that can't be read).

namespace MBQ {

enum MBQCacheStatus : int {
  kCacheOk = 0,
  kCacheNotMapped = -2,     // the file could not be mapped
  kCacheNoSnapshot = -8,    // the header has no usable snapshot
  kCacheLockFailed = -9,    // the file lock could not be taken
  kCacheRemapFailed = -10,  // the mapping could not reach the size the header declares
  kCacheHeaderSize = -11,
  kCacheMagic = -12,
  kCacheKeySize = -13,
  kCacheInvalid = -14,  // marked invalid, or its heap or records are damaged
  kCacheVersion = -15,
  kCacheValueLayout = -16,
};

}  // namespace MBQ
