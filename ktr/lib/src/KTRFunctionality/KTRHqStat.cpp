#include "KTRFunctionality/KTRHqStat.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;
using MBQ::required;

namespace {

constexpr const char* kExpire = "expire";
constexpr const char* kSpaceQuotaName = "disk_space";
// Misspelt, and must stay so: it is the name the other agents use.
constexpr const char* kInodeQuotaName = "diks_inodes";

}  // namespace

const MBQ::MBQLayout<KTRQuotaInfo>& KTRQuotaInfo::layout() {
  static const MBQ::MBQLayout<KTRQuotaInfo> layout{
      required(Tag::kUsage, &KTRQuotaInfo::usage_),          required(Tag::kSoftLimit, &KTRQuotaInfo::softLimit_),
      required(Tag::kHardLimit, &KTRQuotaInfo::hardLimit_), required(Tag::kQuotaExtra, &KTRQuotaInfo::extra_),
      required(kExpire, &KTRQuotaInfo::expire_)};
  return layout;
}

const MBQ::MBQLayout<KTRQuotaStats>& KTRQuotaStats::layout() {
  static const MBQ::MBQLayout<KTRQuotaStats> layout{required(kSpaceQuotaName, &KTRQuotaStats::spaceQuota_),
                                                    required(kInodeQuotaName, &KTRQuotaStats::inodes_),
                                                    required(Tag::kQuota, &KTRQuotaStats::quota3_)};
  return layout;
}

const MBQ::MBQLayout<KTRUbc>& KTRUbc::layout() {
  static const MBQ::MBQLayout<KTRUbc> layout{required(Tag::kName, &KTRUbc::name_), required(Tag::kUsage, &KTRUbc::value_)};
  return layout;
}

const MBQ::MBQLayout<KTRVeCPULoad>& KTRVeCPULoad::layout() {
  static const MBQ::MBQLayout<KTRVeCPULoad> layout{MBQ::base<KTRVeCPULoad, MBQ::MBQCPULoad>(),
                                                   required(Tag::kLoadValue, &KTRVeCPULoad::value_)};
  return layout;
}

}  // namespace KTR
