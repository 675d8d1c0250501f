#include "MBQFunctionalityCore/MBQOperatorRecords.h"

#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {

constexpr const char* kCloneFlags = "clone_flags";
constexpr const char* kResult = "result";
constexpr const char* kLogLevel = "log_level";
constexpr const char* kCpuUser = "cpu_user";
constexpr const char* kCpuSystem = "cpu_system";
constexpr const char* kCpuIdle = "cpu_idle";

}  // namespace

MBQMigratorCloneOptions::~MBQMigratorCloneOptions() = default;

const MBQLayout<MBQMigratorCloneOptions>& MBQMigratorCloneOptions::layout() {
  static const MBQLayout<MBQMigratorCloneOptions> layout{required(kCloneFlags, &MBQMigratorCloneOptions::flags_)};
  return layout;
}

MBQCalculateHWNodeNotes::~MBQCalculateHWNodeNotes() = default;

const MBQLayout<MBQCalculateHWNodeNotes>& MBQCalculateHWNodeNotes::layout() {
  static const MBQLayout<MBQCalculateHWNodeNotes> layout{required(kResult, &MBQCalculateHWNodeNotes::result_)};
  return layout;
}

MBQLogOptions::~MBQLogOptions() = default;

const MBQLayout<MBQLogOptions>& MBQLogOptions::layout() {
  static const MBQLayout<MBQLogOptions> layout{required(kLogLevel, &MBQLogOptions::level_)};
  return layout;
}

MBQNativeConfig::~MBQNativeConfig() = default;

int MBQNativeConfig::Reader::operator()(const MBQMessageIterator&, MBQNativeConfig&) const { return 0; }

int MBQNativeConfig::Writer::operator()(MBQMessageIterator&, const MBQNativeConfig&) const { return 0; }

MBQCPULoad::~MBQCPULoad() = default;

const MBQLayout<MBQCPULoad>& MBQCPULoad::layout() {
  static const MBQLayout<MBQCPULoad> layout{required(kCpuUser, &MBQCPULoad::user_), required(kCpuSystem, &MBQCPULoad::system_),
                                           required(kCpuIdle, &MBQCPULoad::idle_)};
  return layout;
}

int MBQEIDList::Reader::operator()(const MBQMessageIterator& it, MBQEIDList& list) const {
  std::vector<MBQEID> ids;
  const int rc = MBQReaderData(ids, Tag::kEid, MBQReaderOptional)(it, ids);
  list.ids_ = std::move(ids);
  return rc;
}

int MBQEIDList::Writer::operator()(MBQMessageIterator& it, const MBQEIDList& list) const {
  return MBQWriterData(list.ids_, Tag::kEid)(it, list.ids_);
}

}  // namespace MBQ
