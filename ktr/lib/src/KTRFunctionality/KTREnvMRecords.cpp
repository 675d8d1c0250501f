#include "KTRFunctionality/KTREnvMRecords.h"

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;
using MBQ::lenient;
using MBQ::optional;
using MBQ::required;

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

const MBQ::MBQLayout<KTRLogOptions>& KTRLogOptions::layout() {
  static const MBQ::MBQLayout<KTRLogOptions> layout{lenient(optional(Tag::kType, &KTRLogOptions::value_)),
                                                    MBQ::base<KTRLogOptions, MBQ::MBQLogOptions>()};
  return layout;
}

const MBQ::MBQLayout<KTRNativeConfig>& KTRNativeConfig::layout() {
  static const MBQ::MBQLayout<KTRNativeConfig> layout{required(Tag::kContent, &KTRNativeConfig::text_)};
  return layout;
}

const MBQ::MBQLayout<KTRUGIDQuotaLimit::QuotaLimit>& KTRUGIDQuotaLimit::QuotaLimit::layout() {
  static const MBQ::MBQLayout<QuotaLimit> layout{lenient(optional(Tag::kUsage, &QuotaLimit::usage_)),
                                                 required(Tag::kSoftLimit, &QuotaLimit::softLimit_),
                                                 required(Tag::kHardLimit, &QuotaLimit::hardLimit_)};
  return layout;
}

const MBQ::MBQLayout<KTRUGIDQuotaLimit>& KTRUGIDQuotaLimit::layout() {
  // The first limit is the one under quota_limit1 although it is read last.
  static const MBQ::MBQLayout<KTRUGIDQuotaLimit> layout{required(Tag::kName, &KTRUGIDQuotaLimit::id_),
                                                        required(Tag::kQuotaLimit2, &KTRUGIDQuotaLimit::limit2_),
                                                        required(Tag::kQuotaLimit1, &KTRUGIDQuotaLimit::limit1_)};
  return layout;
}

const MBQ::MBQLayout<KTRUGIDQuotaGracePeriod>& KTRUGIDQuotaGracePeriod::layout() {
  static const MBQ::MBQLayout<KTRUGIDQuotaGracePeriod> layout{required(Tag::kQuotaSetting, &KTRUGIDQuotaGracePeriod::period1_),
                                                              required(Tag::kGracePeriod, &KTRUGIDQuotaGracePeriod::period2_)};
  return layout;
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

const MBQ::MBQLayout<KTRScript>& KTRScript::layout() {
  static const MBQ::MBQLayout<KTRScript> layout{
      required(Tag::kKey, &KTRScript::name_), required(Tag::kType, &KTRScript::type_),
      lenient(optional(Tag::kDetail, &KTRScript::detail_)), lenient(optional(Tag::kContent, &KTRScript::content_))};
  return layout;
}

}  // namespace KTR
