#include "KTRFunctionality/KTRPkgM.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kNameTag = 1026;
constexpr int kReleaseTag = 1223;
constexpr int kPackageTextTag = 1511;
constexpr int kPackageFlagTag = 1118;
constexpr int kVersionTextTag = 1497;
constexpr int kPrimaryFlagTag = 1498;
constexpr int kSecondaryFlagTag = 1499;
constexpr int kTemplateListTag = 1509;
constexpr int kTemplateTag = 1295;
constexpr int kDetailTag = 1496;
constexpr int kTypeTag = 1007;
constexpr int kVersionTag = 1223;

}  // namespace

// ---------------------------------------------------------------- KTRTemplate

int KTRTemplate::fromString(const std::string& text) {
  name_ = text;
  release_.clear();
  return 0;
}

int KTRTemplate::Reader::operator()(const MBQMessageIterator& it, KTRTemplate& record) const {
  // Templates named in a container file have no release, so its absence is not an error.
  it.getValue(kReleaseTag, record.release_);
  return it.getValue(kNameTag, record.name_);
}

int KTRTemplate::Writer::operator()(MBQMessageIterator& it, const KTRTemplate& record) const {
  if (it.setValue(kReleaseTag, record.release_) != 0) return -1;
  return it.setValue(kNameTag, record.name_);
}

// ---------------------------------------------------------------- KTRPackage

KTRPackage::~KTRPackage() = default;

int KTRPackage::Reader::operator()(const MBQMessageIterator& it, KTRPackage& package) const {
  package.texts_.clear();
  MBQ::MBQReaderData(package.texts_, kPackageTextTag, MBQ::MBQReaderOptional)(it, package.texts_);
  it.getValue(kPackageFlagTag, package.flag_);
  return KTRTemplate::Reader()(it, package);
}

int KTRPackage::Writer::operator()(MBQMessageIterator& it, const KTRPackage& package) const {
  if (MBQ::MBQWriterData(package.texts_, kPackageTextTag)(it, package.texts_) != 0) return -1;
  if (it.setValue(kPackageFlagTag, package.flag_) != 0) return -1;
  return KTRTemplate::Writer()(it, package);
}

// ---------------------------------------------------------------- KTRPackageVersion

KTRPackageVersion::~KTRPackageVersion() = default;

int KTRPackageVersion::Reader::operator()(const MBQMessageIterator& it, KTRPackageVersion& version) const {
  if (it.getValue(kVersionTextTag, version.versionText_) != 0 && !lenient_) return -1;
  if (it.getValue(kPrimaryFlagTag, version.primaryFlag_) != 0 && !lenient_) return -1;
  it.getValue(kSecondaryFlagTag, version.secondaryFlag_);
  version.templates_.clear();
  const auto templates = MBQ::MBQReaderList(KTRTemplate::Reader(), kTemplateTag, MBQ::MBQReaderOptional);
  MBQ::MBQReaderID(templates, kTemplateListTag, MBQ::MBQReaderOptional)(it, version.templates_);
  return 0;
}

int KTRPackageVersion::Writer::operator()(MBQMessageIterator& it, const KTRPackageVersion& version) const {
  if (it.setValue(kVersionTextTag, version.versionText_) != 0) return -1;
  if (it.setValue(kPrimaryFlagTag, version.primaryFlag_) != 0) return -1;
  if (it.setValue(kSecondaryFlagTag, version.secondaryFlag_) != 0) return -1;
  // The holder is written even for no templates; it reads back as an empty list either way.
  const auto templates = MBQ::MBQWriterList(KTRTemplate::Writer(), kTemplateTag);
  return MBQ::MBQWriterID(templates, kTemplateListTag)(it, version.templates_);
}

// ---------------------------------------------------------------- KTRPackageInfo

int KTRPackageInfo::Reader::operator()(const MBQMessageIterator& it, KTRPackageInfo& info) const {
  if (it.getValue(kNameTag, info.name_) != 0) return -1;
  if (it.getValue(kDetailTag, info.detail_) != 0) return -1;
  if (it.getValue(kTypeTag, info.type_) != 0) return -1;
  info.versions_.clear();
  return MBQ::MBQReaderList(KTRPackageVersion::Reader(), kVersionTag)(it, info.versions_);
}

int KTRPackageInfo::Writer::operator()(MBQMessageIterator& it, const KTRPackageInfo& info) const {
  if (it.setValue(kNameTag, info.name_) != 0) return -1;
  if (it.setValue(kDetailTag, info.detail_) != 0) return -1;
  if (it.setValue(kTypeTag, info.type_) != 0) return -1;
  return MBQ::MBQWriterList(KTRPackageVersion::Writer(), kVersionTag)(it, info.versions_);
}

}  // namespace KTR
