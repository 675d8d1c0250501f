#include "ktrctlCache.h"

#include <cinttypes>
#include <cstdio>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRTemplateCache.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQMemoryMappedFile.h"

namespace ktrctl {

namespace {

using Report = KTR::KTRTemplateCacheLogic::Report;

void printReport(const std::string& path, const Report& r, std::size_t problems) {
  std::printf("path: %s\n", path.c_str());
  std::printf("file size: %" PRIu64 "\n", r.fileSize);
  std::printf("magic: 0x%08" PRIx32 "\n", r.magic);
  std::printf("header size: %" PRIu32 "\n", r.headerSize);
  std::printf("key size: %" PRIu32 "\n", r.keySize);
  std::printf("version: 0x%04" PRIx32 "\n", r.version);
  std::printf("value layout: %" PRIu32 "\n", r.valueLayout);
  std::printf("aux: %" PRIu32 "\n", r.aux);
  std::printf("valid: %" PRIu32 "\n", r.valid);
  std::printf("heap total: %" PRIu64 "\n", r.total);
  std::printf("heap used: %" PRIu64 "\n", r.used);
  std::printf("heap lower bound: %" PRIu64 "\n", r.lowerBound);
  std::printf("heap free: %" PRIu64 "\n", r.heap.freeBytes);
  std::printf("free blocks: %" PRIu64 "\n", r.heap.freeBlocks);
  std::printf("blocks: %" PRIu64 "\n", r.blocks);
  std::printf("entries: %" PRIu64 "\n", r.entries);
  std::printf("snapshot capacity: %" PRIu64 "\n", r.capacity);
  std::printf("snapshot references: %" PRId32 "\n", r.snapshotRefs);
  std::printf("unreachable bytes: %" PRIu64 "\n", r.unreachableBytes);
  std::printf("problems: %zu\n", problems);
}

// Both inspections read the file through a read-only mapping and never write to it.
int inspect(const std::string& path, bool listProblems) {
  Report report;
  std::vector<std::string> problems;
  const int result = KTR::KTRTemplateCacheLogic::checkFile(path, report, problems);
  if (result == -2) return fail("can't read cache " + path + ": " + problems.front());
  if (!listProblems) {
    printReport(path, report, problems.size());
    return kOk;
  }
  if (result == 0) {
    std::printf("%s: ok, %" PRIu64 " entries, %" PRIu64 " of %" PRIu64 " heap bytes used\n", path.c_str(),
                report.entries, report.used, report.total);
    return kOk;
  }
  for (const std::string& problem : problems) std::printf("%s: %s\n", path.c_str(), oneLine(problem).c_str());
  return kNegative;
}

int reset(const std::string& path) {
  if (MBQ::removeLockedCacheFile(path, MBQ::kCacheInvalid) != 0)
    return fail("can't remove cache " + path + ": " + MBQ::getErrorMessage());
  int code = 0;
  if (!KTR::KTRTemplateCachePrototype::open(path, &code))
    return fail("can't create cache " + path + ": " + MBQ::getErrorMessage());
  std::printf("%s: made anew, 0 entries\n", path.c_str());
  return kOk;
}

}  // namespace

int cacheCommand(const Options&, const Args& args) {
  if (args.empty() || args.size() > 2 || (args[0] != "stat" && args[0] != "check" && args[0] != "reset"))
    return fail("usage: ktrctl cache stat [PATH] | cache check [PATH] | cache reset [PATH]");
  const std::string path = args.size() == 2 ? args[1]
                                            : MBQ::MBQInstanceFolders::uploads() + "/" +
                                                  KTR::KTRTemplateCachePrototype::kFileName;
  if (args[0] == "reset") return reset(path);
  return inspect(path, args[0] == "check");
}

}  // namespace ktrctl
