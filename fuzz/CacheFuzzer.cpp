// Arbitrary bytes as the shared template cache file, opened the way the agent opens it (a file
// it refuses is removed and made anew) and then used: look-ups, inserts that grow the file under
// a second process's mapping, removal, a snapshot acquired and released. Nothing may crash, and
// the open must always end with a usable cache.
#include <stdlib.h>
#include <unistd.h>

#include <fstream>

#include "FuzzTarget.h"
#include "KTRFunctionality/KTRTemplateCache.h"
#include "MBQCore/MBQLogger.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using Cache = KTR::KTRTemplateCachePrototype;
  static const std::string path = [] {
    char pattern[] = "/tmp/fuzz_cache.XXXXXX";
    if (::mkdtemp(pattern) == nullptr) std::abort();
    MBQ::Logger::setLevel(-1);
    return std::string(pattern) + "/template.cache";
  }();
  ::unlink(path.c_str());
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

  KTR::KTRTemplateCachePrototypeSP cache = Cache::open(path);
  if (!cache) std::abort();
  KTR::KTRTemplateCachePrototypeSP other = Cache::open(path);  // a second process's view
  if (!other) std::abort();

  std::string bytes;
  for (const char* key : {"alpha", "beta", "gamma", "zeta", ""}) cache->lookup(KTR::KTRTemplateCacheKey(key), bytes);
  KTR::KTRTemplateObject object;
  cache->lookup("alpha", object);

  Cache::storageHandle storage;
  Cache::Snapshot* held = nullptr;
  if (cache->isAccessible()) {
    Cache::storageLockGuard_t guard(*cache);
    if (guard.isLocked()) held = cache->acquireSnapshot(storage);
  }
  cache->insert(KTR::KTRTemplateCacheKey("grow"), std::string(40000, 'g'));  // grows the file
  other->lookup(KTR::KTRTemplateCacheKey("grow"), bytes);                    // remaps to it
  cache->remove(KTR::KTRTemplateCacheKey("alpha"));
  object.setName("fuzz");
  other->insert(object);
  if (held != nullptr) cache->releaseSnapshot(held, storage);
  return 0;
}
