#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQOperatorRecords.h"
#include "MBQMessage/MBQLayout.h"

// The statistics service's records: disk quotas, resource counters and CPU load of a
// container. Every field is required: readers stop at the first missing or malformed element
// and return -1, the fields before it keeping their new values.

namespace KTR {

// One quota, of disk space or of inodes: usage, soft_limit, hard_limit (64-bit), quota_extra
// and "expire" (32-bit).
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

  static const MBQ::MBQLayout<KTRQuotaInfo>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRQuotaInfo>;
  using Writer = MBQ::MBQLayoutWriter<KTRQuotaInfo>;

 private:
  long long usage_ = 0;
  long long softLimit_ = 0;
  long long hardLimit_ = 0;
  int extra_ = 0;
  int expire_ = 0;
};

// Three KTRQuotaInfo: "disk_space", "diks_inodes" and quota. The inode quota's element
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

  static const MBQ::MBQLayout<KTRQuotaStats>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRQuotaStats>;
  using Writer = MBQ::MBQLayoutWriter<KTRQuotaStats>;

 private:
  KTRQuotaInfo spaceQuota_;
  KTRQuotaInfo inodes_;
  KTRQuotaInfo quota3_;
};

// One resource counter: name (text), then its value as usage (64-bit).
class KTR_EXPORT KTRUbc {
 public:
  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  long long getValue() const { return value_; }
  void setValue(long long v) { value_ = v; }

  static const MBQ::MBQLayout<KTRUbc>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUbc>;
  using Writer = MBQ::MBQLayoutWriter<KTRUbc>;

 private:
  std::string name_;
  long long value_ = 0;
};

// A container's CPU load: the MBQCPULoad elements, then load_value (64-bit).
class KTR_EXPORT KTRVeCPULoad : public MBQ::MBQCPULoad {
 public:
  long long getValue() const { return value_; }
  void setValue(long long v) { value_ = v; }

  static const MBQ::MBQLayout<KTRVeCPULoad>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRVeCPULoad>;
  using Writer = MBQ::MBQLayoutWriter<KTRVeCPULoad>;

 private:
  long long value_ = 0;
};

}  // namespace KTR
