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

int MBQMigratorCloneOptions::Reader::operator()(const MBQMessageIterator& it, MBQMigratorCloneOptions& o) const {
  return it.getValue(kCloneFlags, o.flags_);
}

int MBQMigratorCloneOptions::Writer::operator()(MBQMessageIterator& it, const MBQMigratorCloneOptions& o) const {
  return it.setValue(kCloneFlags, o.flags_);
}

MBQCalculateHWNodeNotes::~MBQCalculateHWNodeNotes() = default;

int MBQCalculateHWNodeNotes::Reader::operator()(const MBQMessageIterator& it, MBQCalculateHWNodeNotes& n) const {
  return it.getValue(kResult, n.result_);
}

int MBQCalculateHWNodeNotes::Writer::operator()(MBQMessageIterator& it, const MBQCalculateHWNodeNotes& n) const {
  return it.setValue(kResult, n.result_);
}

MBQLogOptions::~MBQLogOptions() = default;

int MBQLogOptions::Reader::operator()(const MBQMessageIterator& it, MBQLogOptions& o) const {
  return it.getValue(kLogLevel, o.level_);
}

int MBQLogOptions::Writer::operator()(MBQMessageIterator& it, const MBQLogOptions& o) const {
  return it.setValue(kLogLevel, o.level_);
}

MBQNativeConfig::~MBQNativeConfig() = default;

int MBQNativeConfig::Reader::operator()(const MBQMessageIterator&, MBQNativeConfig&) const { return 0; }

int MBQNativeConfig::Writer::operator()(MBQMessageIterator&, const MBQNativeConfig&) const { return 0; }

MBQCPULoad::~MBQCPULoad() = default;

int MBQCPULoad::Reader::operator()(const MBQMessageIterator& it, MBQCPULoad& l) const {
  if (it.getValue(kCpuUser, l.user_) != 0) return -1;
  if (it.getValue(kCpuSystem, l.system_) != 0) return -1;
  return it.getValue(kCpuIdle, l.idle_);
}

int MBQCPULoad::Writer::operator()(MBQMessageIterator& it, const MBQCPULoad& l) const {
  if (it.setValue(kCpuUser, l.user_) != 0) return -1;
  if (it.setValue(kCpuSystem, l.system_) != 0) return -1;
  return it.setValue(kCpuIdle, l.idle_);
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
