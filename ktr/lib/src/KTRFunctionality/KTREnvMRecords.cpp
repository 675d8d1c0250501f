#include "KTRFunctionality/KTREnvMRecords.h"

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;

MBQ::MBQDerivedParserFactoryT<KTRLogOptions, MBQ::MBQLogOptions> logOptionsFactory(false);
MBQ::MBQDerivedParserFactoryT<KTRNativeConfig, MBQ::MBQNativeConfig> nativeConfigFactory(false);

}  // namespace

int KTRUpgradeOptions::Reader::operator()(const MBQMessageIterator& it, KTRUpgradeOptions& o) const {
  o.flags_ = it.hasChild(Tag::kUpgradeFlag) ? FlagUpgrade : 0;
  return 0;
}

int KTRUpgradeOptions::Writer::operator()(MBQMessageIterator& it, const KTRUpgradeOptions& o) const {
  return (o.flags_ & FlagUpgrade) ? it.addChild(Tag::kUpgradeFlag) : 0;
}

int KTRLogOptions::Reader::operator()(const MBQMessageIterator& it, KTRLogOptions& o) const {
  it.getValue(Tag::kType, o.value_);
  return MBQ::MBQLogOptions::Reader()(it, o);
}

int KTRLogOptions::Writer::operator()(MBQMessageIterator& it, const KTRLogOptions& o) const {
  if (it.setValue(Tag::kType, o.value_) != 0) return -1;
  return MBQ::MBQLogOptions::Writer()(it, o);
}

int KTRNativeConfig::Reader::operator()(const MBQMessageIterator& it, KTRNativeConfig& c) const {
  return it.getValue(Tag::kContent, c.text_);
}

int KTRNativeConfig::Writer::operator()(MBQMessageIterator& it, const KTRNativeConfig& c) const {
  return it.setValue(Tag::kContent, c.text_);
}

int KTRUGIDQuotaLimit::QuotaLimit::Reader::operator()(const MBQMessageIterator& it, QuotaLimit& l) const {
  it.getValue(Tag::kUsage, l.usage_);
  if (it.getValue(Tag::kSoftLimit, l.softLimit_) != 0) return -1;
  return it.getValue(Tag::kHardLimit, l.hardLimit_);
}

int KTRUGIDQuotaLimit::QuotaLimit::Writer::operator()(MBQMessageIterator& it, const QuotaLimit& l) const {
  if (it.setValue(Tag::kUsage, l.usage_) != 0) return -1;
  if (it.setValue(Tag::kSoftLimit, l.softLimit_) != 0) return -1;
  return it.setValue(Tag::kHardLimit, l.hardLimit_);
}

int KTRUGIDQuotaLimit::Reader::operator()(const MBQMessageIterator& it, KTRUGIDQuotaLimit& l) const {
  if (it.getValue(Tag::kName, l.id_) != 0) return -1;
  if (MBQ::MBQReaderID(QuotaLimit::Reader(), Tag::kQuotaLimit2)(it, l.limit2_) != 0) return -1;
  return MBQ::MBQReaderID(QuotaLimit::Reader(), Tag::kQuotaLimit1)(it, l.limit1_);
}

int KTRUGIDQuotaLimit::Writer::operator()(MBQMessageIterator& it, const KTRUGIDQuotaLimit& l) const {
  if (it.setValue(Tag::kName, l.id_) != 0) return -1;
  if (MBQ::MBQWriterID(QuotaLimit::Writer(), Tag::kQuotaLimit2)(it, l.limit2_) != 0) return -1;
  return MBQ::MBQWriterID(QuotaLimit::Writer(), Tag::kQuotaLimit1)(it, l.limit1_);
}

int KTRUGIDQuotaGracePeriod::Reader::operator()(const MBQMessageIterator& it, KTRUGIDQuotaGracePeriod& p) const {
  if (it.getValue(Tag::kQuotaSetting, p.period1_) != 0) return -1;
  return it.getValue(Tag::kGracePeriod, p.period2_);
}

int KTRUGIDQuotaGracePeriod::Writer::operator()(MBQMessageIterator& it, const KTRUGIDQuotaGracePeriod& p) const {
  if (it.setValue(Tag::kQuotaSetting, p.period1_) != 0) return -1;
  return it.setValue(Tag::kGracePeriod, p.period2_);
}

int KTRUGIDQuotaInfo::Reader::operator()(const MBQMessageIterator& it, KTRUGIDQuotaInfo& q) const {
  if (it.getValue(Tag::kType, q.value_) != 0) return -1;
  q.limits_.specify(true);
  q.limits_.get().clear();
  const auto limits = MBQ::MBQReaderList(KTRUGIDQuotaLimit::Reader(), Tag::kUgidLimit, MBQ::MBQReaderOptional);
  if (MBQ::MBQReaderID(limits, Tag::kUgidLimits)(it, q.limits_.get()) != 0) q.limits_.specify(false);
  q.gracePeriod_.specify(true);
  if (MBQ::MBQReaderID(KTRUGIDQuotaGracePeriod::Reader(), Tag::kGracePeriods)(it, q.gracePeriod_.get()) != 0)
    q.gracePeriod_.specify(false);
  return 0;
}

int KTRUGIDQuotaInfo::Writer::operator()(MBQMessageIterator& it, const KTRUGIDQuotaInfo& q) const {
  if (it.setValue(Tag::kType, q.value_) != 0) return -1;
  if (q.limits_.isSpecified()) {
    const auto limits = MBQ::MBQWriterList(KTRUGIDQuotaLimit::Writer(), Tag::kUgidLimit);
    if (MBQ::MBQWriterID(limits, Tag::kUgidLimits)(it, q.limits_.get()) != 0) return -1;
  }
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<KTRUGIDQuotaGracePeriod>>(),
                          Tag::kGracePeriods)(it, q.gracePeriod_);
}

int KTRScript::Reader::operator()(const MBQMessageIterator& it, KTRScript& s) const {
  if (it.getValue(Tag::kKey, s.name_) != 0) return -1;
  if (it.getValue(Tag::kType, s.type_) != 0) return -1;
  it.getValue(Tag::kDetail, s.detail_);
  it.getValue(Tag::kContent, s.content_);
  return 0;
}

int KTRScript::Writer::operator()(MBQMessageIterator& it, const KTRScript& s) const {
  if (it.setValue(Tag::kKey, s.name_) != 0) return -1;
  if (it.setValue(Tag::kType, s.type_) != 0) return -1;
  if (it.setValue(Tag::kDetail, s.detail_) != 0) return -1;
  return it.setValue(Tag::kContent, s.content_);
}

}  // namespace KTR
