#include "KTRFunctionality/KTREnvMRecords.h"

#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kUpgradeFlagTag = 1152;
constexpr int kTypeTag = 1007;
constexpr int kContentTag = 1328;
constexpr int kUsageTag = 1065;
constexpr int kSoftLimitTag = 1066;
constexpr int kHardLimitTag = 1067;
constexpr int kNameTag = 1010;
constexpr int kLimit2Tag = 1231;
constexpr int kLimit1Tag = 1232;
constexpr int kGrace1Tag = 1301;
constexpr int kGrace2Tag = 1582;
constexpr int kLimitTag = 1377;
constexpr int kLimitsTag = 1538;
constexpr int kGracePeriodsTag = 1573;
constexpr int kKeyTag = 1026;
constexpr int kDetailTag = 1496;

MBQ::MBQDerivedParserFactoryT<KTRLogOptions, MBQ::MBQLogOptions> logOptionsFactory(false);
MBQ::MBQDerivedParserFactoryT<KTRNativeConfig, MBQ::MBQNativeConfig> nativeConfigFactory(false);

}  // namespace

int KTRUpgradeOptions::Reader::operator()(const MBQMessageIterator& it, KTRUpgradeOptions& o) const {
  o.flags_ = it.hasChild(kUpgradeFlagTag) ? FlagUpgrade : 0;
  return 0;
}

int KTRUpgradeOptions::Writer::operator()(MBQMessageIterator& it, const KTRUpgradeOptions& o) const {
  return (o.flags_ & FlagUpgrade) ? it.addChild(kUpgradeFlagTag) : 0;
}

int KTRLogOptions::Reader::operator()(const MBQMessageIterator& it, KTRLogOptions& o) const {
  it.getValue(kTypeTag, o.value_);
  return MBQ::MBQLogOptions::Reader()(it, o);
}

int KTRLogOptions::Writer::operator()(MBQMessageIterator& it, const KTRLogOptions& o) const {
  if (it.setValue(kTypeTag, o.value_) != 0) return -1;
  return MBQ::MBQLogOptions::Writer()(it, o);
}

int KTRNativeConfig::Reader::operator()(const MBQMessageIterator& it, KTRNativeConfig& c) const {
  return it.getValue(kContentTag, c.text_);
}

int KTRNativeConfig::Writer::operator()(MBQMessageIterator& it, const KTRNativeConfig& c) const {
  return it.setValue(kContentTag, c.text_);
}

int KTRUGIDQuotaLimit::QuotaLimit::Reader::operator()(const MBQMessageIterator& it, QuotaLimit& l) const {
  it.getValue(kUsageTag, l.usage_);
  if (it.getValue(kSoftLimitTag, l.softLimit_) != 0) return -1;
  return it.getValue(kHardLimitTag, l.hardLimit_);
}

int KTRUGIDQuotaLimit::QuotaLimit::Writer::operator()(MBQMessageIterator& it, const QuotaLimit& l) const {
  if (it.setValue(kUsageTag, l.usage_) != 0) return -1;
  if (it.setValue(kSoftLimitTag, l.softLimit_) != 0) return -1;
  return it.setValue(kHardLimitTag, l.hardLimit_);
}

int KTRUGIDQuotaLimit::Reader::operator()(const MBQMessageIterator& it, KTRUGIDQuotaLimit& l) const {
  if (it.getValue(kNameTag, l.id_) != 0) return -1;
  if (MBQ::MBQReaderID(QuotaLimit::Reader(), kLimit2Tag)(it, l.limit2_) != 0) return -1;
  return MBQ::MBQReaderID(QuotaLimit::Reader(), kLimit1Tag)(it, l.limit1_);
}

int KTRUGIDQuotaLimit::Writer::operator()(MBQMessageIterator& it, const KTRUGIDQuotaLimit& l) const {
  if (it.setValue(kNameTag, l.id_) != 0) return -1;
  if (MBQ::MBQWriterID(QuotaLimit::Writer(), kLimit2Tag)(it, l.limit2_) != 0) return -1;
  return MBQ::MBQWriterID(QuotaLimit::Writer(), kLimit1Tag)(it, l.limit1_);
}

int KTRUGIDQuotaGracePeriod::Reader::operator()(const MBQMessageIterator& it, KTRUGIDQuotaGracePeriod& p) const {
  if (it.getValue(kGrace1Tag, p.period1_) != 0) return -1;
  return it.getValue(kGrace2Tag, p.period2_);
}

int KTRUGIDQuotaGracePeriod::Writer::operator()(MBQMessageIterator& it, const KTRUGIDQuotaGracePeriod& p) const {
  if (it.setValue(kGrace1Tag, p.period1_) != 0) return -1;
  return it.setValue(kGrace2Tag, p.period2_);
}

int KTRUGIDQuotaInfo::Reader::operator()(const MBQMessageIterator& it, KTRUGIDQuotaInfo& q) const {
  if (it.getValue(kTypeTag, q.value_) != 0) return -1;
  q.limits_.specify(true);
  q.limits_.get().clear();
  const auto limits = MBQ::MBQReaderList(KTRUGIDQuotaLimit::Reader(), kLimitTag, MBQ::MBQReaderOptional);
  if (MBQ::MBQReaderID(limits, kLimitsTag)(it, q.limits_.get()) != 0) q.limits_.specify(false);
  q.gracePeriod_.specify(true);
  if (MBQ::MBQReaderID(KTRUGIDQuotaGracePeriod::Reader(), kGracePeriodsTag)(it, q.gracePeriod_.get()) != 0)
    q.gracePeriod_.specify(false);
  return 0;
}

int KTRUGIDQuotaInfo::Writer::operator()(MBQMessageIterator& it, const KTRUGIDQuotaInfo& q) const {
  if (it.setValue(kTypeTag, q.value_) != 0) return -1;
  if (q.limits_.isSpecified()) {
    const auto limits = MBQ::MBQWriterList(KTRUGIDQuotaLimit::Writer(), kLimitTag);
    if (MBQ::MBQWriterID(limits, kLimitsTag)(it, q.limits_.get()) != 0) return -1;
  }
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<KTRUGIDQuotaGracePeriod>>(),
                          kGracePeriodsTag)(it, q.gracePeriod_);
}

int KTRScript::Reader::operator()(const MBQMessageIterator& it, KTRScript& s) const {
  if (it.getValue(kKeyTag, s.name_) != 0) return -1;
  if (it.getValue(kTypeTag, s.type_) != 0) return -1;
  it.getValue(kDetailTag, s.detail_);
  it.getValue(kContentTag, s.content_);
  return 0;
}

int KTRScript::Writer::operator()(MBQMessageIterator& it, const KTRScript& s) const {
  if (it.setValue(kKeyTag, s.name_) != 0) return -1;
  if (it.setValue(kTypeTag, s.type_) != 0) return -1;
  if (it.setValue(kDetailTag, s.detail_) != 0) return -1;
  return it.setValue(kContentTag, s.content_);
}

}  // namespace KTR
