#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQOperatorRecords.h"
#include "MBQMessage/MBQMessageIterator.h"

// The statistics service's records: disk quotas, resource counters and CPU load of a
// container. Every field is required: readers stop at the first missing or malformed element
// and return -1, the fields before it keeping their new values.

namespace KTR {

// One quota, of disk space or of inodes. Layout: 1065, 1066, 1067 (64-bit), 1004 (32-bit),
// "expire" (32-bit).
class KTR_EXPORT KTRQuotaInfo {
 public:
  long long getUsage() const { return usage_; }
  void setUsage(long long v) { usage_ = v; }
  long long getSoftLimit() const { return softLimit_; }
  void setSoftLimit(long long v) { softLimit_ = v; }
  long long getHardLimit() const { return hardLimit_; }
  void setHardLimit(long long v) { hardLimit_ = v; }
  int getExtra() const { return extra_; }
  void setExtra(int v) { extra_ = v; }
  int getExpire() const { return expire_; }
  void setExpire(int v) { expire_ = v; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRQuotaInfo& quota) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRQuotaInfo& quota) const;
  };

 private:
  long long usage_ = 0;
  long long softLimit_ = 0;
  long long hardLimit_ = 0;
  int extra_ = 0;
  int expire_ = 0;
};

// Layout: "disk_space", "diks_inodes", 1579, each a KTRQuotaInfo. The inode quota's element
// name is spelled "diks_inodes" on purpose: the agents in the field exchange it so, and an
// element under the correct spelling does not read.
class KTR_EXPORT KTRQuotaStats {
 public:
  const KTRQuotaInfo& getSpaceQuota() const { return spaceQuota_; }
  void setSpaceQuota(const KTRQuotaInfo& q) { spaceQuota_ = q; }
  const KTRQuotaInfo& getInodes() const { return inodes_; }
  void setInodes(const KTRQuotaInfo& q) { inodes_ = q; }
  const KTRQuotaInfo& getQuota3() const { return quota3_; }
  void setQuota3(const KTRQuotaInfo& q) { quota3_ = q; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRQuotaStats& stats) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRQuotaStats& stats) const;
  };

 private:
  KTRQuotaInfo spaceQuota_;
  KTRQuotaInfo inodes_;
  KTRQuotaInfo quota3_;
};

// One resource counter. Layout: 1010 name (text), 1065 value (64-bit).
class KTR_EXPORT KTRUbc {
 public:
  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  long long getValue() const { return value_; }
  void setValue(long long v) { value_ = v; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUbc& ubc) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUbc& ubc) const;
  };

 private:
  std::string name_;
  long long value_ = 0;
};

// A container's CPU load. Layout: the MBQCPULoad elements, then 1586 (64-bit).
class KTR_EXPORT KTRVeCPULoad : public MBQ::MBQCPULoad {
 public:
  long long getValue() const { return value_; }
  void setValue(long long v) { value_ = v; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRVeCPULoad& load) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRVeCPULoad& load) const;
  };

 private:
  long long value_ = 0;
};

}  // namespace KTR
