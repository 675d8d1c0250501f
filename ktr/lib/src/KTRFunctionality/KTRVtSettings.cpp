#include "KTRFunctionality/KTRVtSettings.h"

#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;
using OptionalText = MBQ::MBQOptionalProperty<std::string>;

// A derived record's base part goes into the derived record's own element. The base writer's
// typed write would also replace the element's schema type with the base's (core 292:151 or
// 292:152), and the derived reader could no longer choose the derived class; so only the
// base's namespace is taken over, for the base's elements.
template <class Base, class BaseWriter>
int writeBasePart(MBQMessageIterator& it, const Base& base, const BaseWriter& writer) {
  const std::string saved = it.getNamespace();
  if (it.setNamespace(writer.getNSID()) != 0) return -1;
  const int rc = writer(it, base);
  it.setNamespace(saved);
  return rc;
}

int writeOptionalText(MBQMessageIterator& it, const char* name, const OptionalText& text) {
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<OptionalText>(), name)(it, text);
}

void readOptionalText(const MBQMessageIterator& it, const char* name, OptionalText& text) {
  MBQ::MBQReaderID(MBQ::MBQDefaultReader<OptionalText>(), name, MBQ::MBQReaderOptional)(it, text);
}

constexpr const char* kNoOfflineService = "no_offline_service";

}  // namespace

// ---------------------------------------------------------------- KTRRedirectService

const MBQ::MBQLayout<KTRRedirectService>& KTRRedirectService::layout() {
  using R = KTRRedirectService;
  static const MBQ::MBQLayout<R> layout{MBQ::required(Tag::kName, &R::name_), MBQ::required(Tag::kPort, &R::port_),
                                        MBQ::required(Tag::kEid, &R::target_), MBQ::marker(Tag::kRedirectFlag, &R::flag_)};
  return layout;
}

// ---------------------------------------------------------------- KTRConnectionLinkInfo

// Only the host is checked: older peers send nothing else.
const MBQ::MBQLayout<KTRConnectionLinkInfo>& KTRConnectionLinkInfo::layout() {
  using R = KTRConnectionLinkInfo;
  using MBQ::lenient;
  using MBQ::optional;
  static const MBQ::MBQLayout<R> layout{lenient(optional("client_ip", &R::clientIp_)),
                                        lenient(optional("client_port", &R::clientPort_)), MBQ::required(Tag::kHost, &R::host_),
                                        lenient(optional(Tag::kPort, &R::port_))};
  return layout;
}

// ---------------------------------------------------------------- KTRVtInfo

KTRVtInfo::~KTRVtInfo() = default;

int KTRVtInfo::Reader::operator()(const MBQMessageIterator& it, KTRVtInfo& info) const {
  // The own elements are informational; only the base part decides whether the record reads.
  it.getValue(Tag::kRelease, info.release_);
  it.getValue(Tag::kVtText, info.vtText_);
  MBQ::MBQReaderID(MBQ::MBQDefaultReader<MBQ::MBQEID>(), "sve_eid")(it, info.sveEid_);
  info.items_.clear();
  MBQ::MBQReaderData(info.items_, Tag::kVtItem, MBQ::MBQReaderOptional)(it, info.items_);
  return MBQ::MBQVtInfo::Reader()(it, info);
}

int KTRVtInfo::Writer::operator()(MBQMessageIterator& it, const KTRVtInfo& info) const {
  if (it.setValue(Tag::kRelease, info.release_) != 0) return -1;
  if (it.setValue(Tag::kVtText, info.vtText_) != 0) return -1;
  if (MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQEID>(), "sve_eid")(it, info.sveEid_) != 0) return -1;
  if (MBQ::MBQWriterData(info.items_, Tag::kVtItem)(it, info.items_) != 0) return -1;
  return writeBasePart(it, static_cast<const MBQ::MBQVtInfo&>(info), MBQ::MBQVtInfo::Writer());
}

// ---------------------------------------------------------------- KTRVtSettings

KTRVtSettings::~KTRVtSettings() = default;

int KTRVtSettings::Reader::operator()(const MBQMessageIterator& it, KTRVtSettings& settings) const {
  readOptionalText(it, "lock_dir", settings.lockDir_);
  readOptionalText(it, "template_dir", settings.templateDir_);

  settings.settings_.clear();
  const auto keyReader = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), Tag::kName, MBQ::MBQReaderOptional);
  const auto valueReader = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), Tag::kValue, MBQ::MBQReaderOptional);
  // A node without settings sends no map at all; that is not an error.
  MBQ::MBQReaderMap(Tag::kItem, MBQ::MBQReaderRequired, keyReader, valueReader)(it, settings.settings_);

  auto& services = settings.offlineServices_;
  services.get().clear();
  if (it.hasChild(kNoOfflineService)) {
    services.specify(true);
  } else {
    services.specify(MBQ::MBQReaderList(KTRRedirectService::Reader(), Tag::kOfflineService)(it, services.get()) == 0);
  }

  settings.qoses_.clear();
  MBQ::MBQReaderID(MBQ::MBQReaderSet(MBQ::MBQQoS::Reader(), Tag::kQosValue), "qoses")(it, settings.qoses_);

  return MBQ::MBQVtSettings::Reader()(it, settings);
}

int KTRVtSettings::Writer::operator()(MBQMessageIterator& it, const KTRVtSettings& settings) const {
  if (writeOptionalText(it, "lock_dir", settings.lockDir_) != 0) return -1;
  if (writeOptionalText(it, "template_dir", settings.templateDir_) != 0) return -1;

  const auto keyWriter = MBQ::MBQWriterID(MBQ::MBQWriterValue<std::string>(), Tag::kName);
  const auto valueWriter = MBQ::MBQWriterID(MBQ::MBQWriterValue<std::string>(), Tag::kValue);
  if (MBQ::MBQWriterMap(Tag::kItem, keyWriter, valueWriter)(it, settings.settings_) != 0) return -1;

  // An empty list must read back as "specified, none", which an absent list cannot say.
  const auto& services = settings.offlineServices_;
  if (services.isSpecified()) {
    const int rc = services.get().empty() ? it.addChild(kNoOfflineService)
                                          : MBQ::MBQWriterList(KTRRedirectService::Writer(), Tag::kOfflineService)(it, services.get());
    if (rc != 0) return -1;
  }

  if (it.addChildAndDescend("qoses") != 0) return -1;
  const int rc = MBQ::MBQWriterList(MBQ::MBQQoS::Writer(), Tag::kQosValue)(it, settings.qoses_);
  it.up();
  if (rc != 0) return -1;

  return writeBasePart(it, static_cast<const MBQ::MBQVtSettings&>(settings), MBQ::MBQVtSettings::Writer());
}

}  // namespace KTR
