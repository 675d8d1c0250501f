#include "KTRFunctionality/KTRHqStat.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;
constexpr const char* kExpire = "expire";
constexpr const char* kSpaceQuotaName = "disk_space";
// Misspelt, and must stay so: it is the name the other agents use.
constexpr const char* kInodeQuotaName = "diks_inodes";

}  // namespace

int KTRQuotaInfo::Reader::operator()(const MBQMessageIterator& it, KTRQuotaInfo& q) const {
  if (it.getValue(Tag::kUsage, q.usage_) != 0) return -1;
  if (it.getValue(Tag::kSoftLimit, q.softLimit_) != 0) return -1;
  if (it.getValue(Tag::kHardLimit, q.hardLimit_) != 0) return -1;
  if (it.getValue(Tag::kQuotaExtra, q.extra_) != 0) return -1;
  return it.getValue(kExpire, q.expire_);
}

int KTRQuotaInfo::Writer::operator()(MBQMessageIterator& it, const KTRQuotaInfo& q) const {
  if (it.setValue(Tag::kUsage, q.usage_) != 0) return -1;
  if (it.setValue(Tag::kSoftLimit, q.softLimit_) != 0) return -1;
  if (it.setValue(Tag::kHardLimit, q.hardLimit_) != 0) return -1;
  if (it.setValue(Tag::kQuotaExtra, q.extra_) != 0) return -1;
  return it.setValue(kExpire, q.expire_);
}

int KTRQuotaStats::Reader::operator()(const MBQMessageIterator& it, KTRQuotaStats& s) const {
  if (MBQ::MBQReaderID(KTRQuotaInfo::Reader(), kSpaceQuotaName)(it, s.spaceQuota_) != 0) return -1;
  if (MBQ::MBQReaderID(KTRQuotaInfo::Reader(), kInodeQuotaName)(it, s.inodes_) != 0) return -1;
  return MBQ::MBQReaderID(KTRQuotaInfo::Reader(), Tag::kQuota)(it, s.quota3_) != 0 ? -1 : 0;
}

int KTRQuotaStats::Writer::operator()(MBQMessageIterator& it, const KTRQuotaStats& s) const {
  if (MBQ::MBQWriterID(KTRQuotaInfo::Writer(), kSpaceQuotaName)(it, s.spaceQuota_) != 0) return -1;
  if (MBQ::MBQWriterID(KTRQuotaInfo::Writer(), kInodeQuotaName)(it, s.inodes_) != 0) return -1;
  return MBQ::MBQWriterID(KTRQuotaInfo::Writer(), Tag::kQuota)(it, s.quota3_);
}

int KTRUbc::Reader::operator()(const MBQMessageIterator& it, KTRUbc& u) const {
  if (it.getValue(Tag::kName, u.name_) != 0) return -1;
  return it.getValue(Tag::kUsage, u.value_);
}

int KTRUbc::Writer::operator()(MBQMessageIterator& it, const KTRUbc& u) const {
  if (it.setValue(Tag::kName, u.name_) != 0) return -1;
  return it.setValue(Tag::kUsage, u.value_);
}

int KTRVeCPULoad::Reader::operator()(const MBQMessageIterator& it, KTRVeCPULoad& l) const {
  if (MBQ::MBQCPULoad::Reader()(it, l) != 0) return -1;
  return it.getValue(Tag::kLoadValue, l.value_);
}

int KTRVeCPULoad::Writer::operator()(MBQMessageIterator& it, const KTRVeCPULoad& l) const {
  if (MBQ::MBQCPULoad::Writer()(it, l) != 0) return -1;
  return it.setValue(Tag::kLoadValue, l.value_);
}

}  // namespace KTR
