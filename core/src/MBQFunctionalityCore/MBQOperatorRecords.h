#pragma once

#include <string>
#include <vector>

#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQLayout.h"

// The core's part of the records that operator services exchange: clone options and capacity
// notes of the migration service, log options and the native configuration of the container
// manager, the CPU load of the statistics service and lists of environment ids. Technology
// libraries derive their own records from the polymorphic ones and register them with the
// derived-parser registry of the base, so these records carry only what every technology
// shares.
//
// Every layout is read from and written into the record's own element; readers return 0 or
// -1 (a missing or malformed required element, the record then partly read), writers 0 or -1.

namespace MBQ {

// Layout: "clone_flags" (required, unsigned 32-bit).
class MBQ_EXPORT MBQMigratorCloneOptions {
 public:
  virtual ~MBQMigratorCloneOptions();

  unsigned getFlags() const { return flags_; }
  void setFlags(unsigned flags) { flags_ = flags; }

  static const MBQ::MBQLayout<MBQMigratorCloneOptions>& layout();
  using Reader = MBQ::MBQLayoutReader<MBQMigratorCloneOptions>;
  using Writer = MBQ::MBQLayoutWriter<MBQMigratorCloneOptions>;

 private:
  unsigned flags_ = 0;
};

// Layout: "result" (required, 32-bit): the verdict of a capacity check.
class MBQ_EXPORT MBQCalculateHWNodeNotes {
 public:
  virtual ~MBQCalculateHWNodeNotes();

  int getResult() const { return result_; }
  void setResult(int result) { result_ = result; }

  static const MBQ::MBQLayout<MBQCalculateHWNodeNotes>& layout();
  using Reader = MBQ::MBQLayoutReader<MBQCalculateHWNodeNotes>;
  using Writer = MBQ::MBQLayoutWriter<MBQCalculateHWNodeNotes>;

 private:
  int result_ = 0;
};

// Layout: "log_level" (required, 32-bit).
class MBQ_EXPORT MBQLogOptions {
 public:
  virtual ~MBQLogOptions();

  int getLevel() const { return level_; }
  void setLevel(int level) { level_ = level; }

  static const MBQ::MBQLayout<MBQLogOptions>& layout();
  using Reader = MBQ::MBQLayoutReader<MBQLogOptions>;
  using Writer = MBQ::MBQLayoutWriter<MBQLogOptions>;

 private:
  int level_ = 0;
};

// A container's configuration in its technology's own format. The core knows nothing of the
// format, so the base has no elements: reading and writing it always succeed.
class MBQ_EXPORT MBQNativeConfig {
 public:
  virtual ~MBQNativeConfig();

  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQNativeConfig& config) const;
  };
  struct MBQ_EXPORT Writer {
    int operator()(MBQMessageIterator& it, const MBQNativeConfig& config) const;
  };
};

// CPU time counters. Layout: "cpu_user", "cpu_system", "cpu_idle" (all required, 64-bit).
class MBQ_EXPORT MBQCPULoad {
 public:
  virtual ~MBQCPULoad();

  long long getUser() const { return user_; }
  void setUser(long long v) { user_ = v; }
  long long getSystem() const { return system_; }
  void setSystem(long long v) { system_ = v; }
  long long getIdle() const { return idle_; }
  void setIdle(long long v) { idle_ = v; }

  static const MBQ::MBQLayout<MBQCPULoad>& layout();
  using Reader = MBQ::MBQLayoutReader<MBQCPULoad>;
  using Writer = MBQ::MBQLayoutWriter<MBQCPULoad>;

 private:
  long long user_ = 0;
  long long system_ = 0;
  long long idle_ = 0;
};

// Environment ids. Layout: one "eid" element per id; the reader replaces the list
// with the ids up to the first one that does not read, and fails (keeping the list) only when
// such an id exists.
class MBQ_EXPORT MBQEIDList {
 public:
  const std::vector<MBQEID>& getIds() const { return ids_; }
  void setIds(const std::vector<MBQEID>& ids) { ids_ = ids; }

  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQEIDList& list) const;
  };
  struct MBQ_EXPORT Writer {
    int operator()(MBQMessageIterator& it, const MBQEIDList& list) const;
  };

 private:
  std::vector<MBQEID> ids_;
};

}  // namespace MBQ
