#include "KTRFunctionality/KTRHqStat.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kUsageTag = 1065;
constexpr int kSoftLimitTag = 1066;
constexpr int kHardLimitTag = 1067;
constexpr int kExtraTag = 1004;
constexpr int kQuota3Tag = 1579;
constexpr int kNameTag = 1010;
constexpr int kLoadValueTag = 1586;
constexpr const char* kExpire = "expire";
constexpr const char* kSpaceQuotaName = "disk_space";
// Misspelt, and must stay so: it is the name the other agents use.
constexpr const char* kInodeQuotaName = "diks_inodes";

}  // namespace

int KTRQuotaInfo::Reader::operator()(const MBQMessageIterator& it, KTRQuotaInfo& q) const {
  if (it.getValue(kUsageTag, q.usage_) != 0) return -1;
  if (it.getValue(kSoftLimitTag, q.softLimit_) != 0) return -1;
  if (it.getValue(kHardLimitTag, q.hardLimit_) != 0) return -1;
  if (it.getValue(kExtraTag, q.extra_) != 0) return -1;
  return it.getValue(kExpire, q.expire_);
}

int KTRQuotaInfo::Writer::operator()(MBQMessageIterator& it, const KTRQuotaInfo& q) const {
  if (it.setValue(kUsageTag, q.usage_) != 0) return -1;
  if (it.setValue(kSoftLimitTag, q.softLimit_) != 0) return -1;
  if (it.setValue(kHardLimitTag, q.hardLimit_) != 0) return -1;
  if (it.setValue(kExtraTag, q.extra_) != 0) return -1;
  return it.setValue(kExpire, q.expire_);
}

int KTRQuotaStats::Reader::operator()(const MBQMessageIterator& it, KTRQuotaStats& s) const {
  if (MBQ::MBQReaderID(KTRQuotaInfo::Reader(), kSpaceQuotaName)(it, s.spaceQuota_) != 0) return -1;
  if (MBQ::MBQReaderID(KTRQuotaInfo::Reader(), kInodeQuotaName)(it, s.inodes_) != 0) return -1;
  return MBQ::MBQReaderID(KTRQuotaInfo::Reader(), kQuota3Tag)(it, s.quota3_) != 0 ? -1 : 0;
}

int KTRQuotaStats::Writer::operator()(MBQMessageIterator& it, const KTRQuotaStats& s) const {
  if (MBQ::MBQWriterID(KTRQuotaInfo::Writer(), kSpaceQuotaName)(it, s.spaceQuota_) != 0) return -1;
  if (MBQ::MBQWriterID(KTRQuotaInfo::Writer(), kInodeQuotaName)(it, s.inodes_) != 0) return -1;
  return MBQ::MBQWriterID(KTRQuotaInfo::Writer(), kQuota3Tag)(it, s.quota3_);
}

int KTRUbc::Reader::operator()(const MBQMessageIterator& it, KTRUbc& u) const {
  if (it.getValue(kNameTag, u.name_) != 0) return -1;
  return it.getValue(kUsageTag, u.value_);
}

int KTRUbc::Writer::operator()(MBQMessageIterator& it, const KTRUbc& u) const {
  if (it.setValue(kNameTag, u.name_) != 0) return -1;
  return it.setValue(kUsageTag, u.value_);
}

int KTRVeCPULoad::Reader::operator()(const MBQMessageIterator& it, KTRVeCPULoad& l) const {
  if (MBQ::MBQCPULoad::Reader()(it, l) != 0) return -1;
  return it.getValue(kLoadValueTag, l.value_);
}

int KTRVeCPULoad::Writer::operator()(MBQMessageIterator& it, const KTRVeCPULoad& l) const {
  if (MBQ::MBQCPULoad::Writer()(it, l) != 0) return -1;
  return it.setValue(kLoadValueTag, l.value_);
}

}  // namespace KTR
