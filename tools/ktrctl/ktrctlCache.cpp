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

void printReport(const std::string& path, const Report& r) {
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
  std::printf("entries: %" PRIu64 "\n", r.entries);
  std::printf("snapshot capacity: %" PRIu64 "\n", r.capacity);
  std::printf("snapshot references: %" PRId32 "\n", r.snapshotRefs);
}

int stat(const Options& options, const std::string& path) {
  int code = 0;
  {
    KTR::KTRTemplateCachePrototypeSP cache = KTR::KTRTemplateCachePrototype::open(path, &code);
    if (!cache) return fail("can't open cache " + path + " (code " + std::to_string(code) + "): " +
                            MBQ::getErrorMessage());
  }
  if (options.verbose && code != 0) std::fprintf(stderr, "ktrctl: %s was made anew\n", path.c_str());
  Report report;
  std::vector<std::string> problems;
  KTR::KTRTemplateCacheLogic::checkFile(path, report, problems);
  printReport(path, report);
  for (const std::string& problem : problems) std::fprintf(stderr, "ktrctl: %s: %s\n", path.c_str(), problem.c_str());
  return kOk;
}

int check(const std::string& path) {
  Report report;
  std::vector<std::string> problems;
  if (KTR::KTRTemplateCacheLogic::checkFile(path, report, problems) == 0) {
    std::printf("%s: ok, %" PRIu64 " entries, %" PRIu64 " of %" PRIu64 " heap bytes used\n", path.c_str(),
                report.entries, report.used, report.total);
    return kOk;
  }
  for (const std::string& problem : problems) std::printf("%s: %s\n", path.c_str(), problem.c_str());
  return kNegative;
}

}  // namespace

int cacheCommand(const Options& options, const Args& args) {
  if (args.empty() || args.size() > 2 || (args[0] != "stat" && args[0] != "check"))
    return fail("usage: ktrctl cache stat [PATH] | cache check [PATH]");
  const std::string path = args.size() == 2 ? args[1]
                                            : MBQ::MBQInstanceFolders::uploads() + "/" +
                                                  KTR::KTRTemplateCachePrototype::kFileName;
  return args[0] == "stat" ? stat(options, path) : check(path);
}

}  // namespace ktrctl
