#include "KTRFunctionality/KTRPkgM.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;

}  // namespace

// ---------------------------------------------------------------- KTRTemplate

int KTRTemplate::fromString(const std::string& text) {
  name_ = text;
  release_.clear();
  return 0;
}

int KTRTemplate::Reader::operator()(const MBQMessageIterator& it, KTRTemplate& record) const {
  // Templates named in a container file have no release, so its absence is not an error.
  it.getValue(Tag::kRelease, record.release_);
  return it.getValue(Tag::kKey, record.name_);
}

int KTRTemplate::Writer::operator()(MBQMessageIterator& it, const KTRTemplate& record) const {
  if (it.setValue(Tag::kRelease, record.release_) != 0) return -1;
  return it.setValue(Tag::kKey, record.name_);
}

// ---------------------------------------------------------------- KTRPackage

KTRPackage::~KTRPackage() = default;

int KTRPackage::Reader::operator()(const MBQMessageIterator& it, KTRPackage& package) const {
  package.texts_.clear();
  MBQ::MBQReaderData(package.texts_, Tag::kPackageText, MBQ::MBQReaderOptional)(it, package.texts_);
  it.getValue(Tag::kPackageFlag, package.flag_);
  return KTRTemplate::Reader()(it, package);
}

int KTRPackage::Writer::operator()(MBQMessageIterator& it, const KTRPackage& package) const {
  if (MBQ::MBQWriterData(package.texts_, Tag::kPackageText)(it, package.texts_) != 0) return -1;
  if (it.setValue(Tag::kPackageFlag, package.flag_) != 0) return -1;
  return KTRTemplate::Writer()(it, package);
}

// ---------------------------------------------------------------- KTRPackageVersion

KTRPackageVersion::~KTRPackageVersion() = default;

int KTRPackageVersion::Reader::operator()(const MBQMessageIterator& it, KTRPackageVersion& version) const {
  if (it.getValue(Tag::kVersionText, version.versionText_) != 0 && !lenient_) return -1;
  if (it.getValue(Tag::kPrimaryFlag, version.primaryFlag_) != 0 && !lenient_) return -1;
  it.getValue(Tag::kSecondaryFlag, version.secondaryFlag_);
  version.templates_.clear();
  const auto templates = MBQ::MBQReaderList(KTRTemplate::Reader(), Tag::kPackage, MBQ::MBQReaderOptional);
  MBQ::MBQReaderID(templates, Tag::kTemplateList, MBQ::MBQReaderOptional)(it, version.templates_);
  return 0;
}

int KTRPackageVersion::Writer::operator()(MBQMessageIterator& it, const KTRPackageVersion& version) const {
  if (it.setValue(Tag::kVersionText, version.versionText_) != 0) return -1;
  if (it.setValue(Tag::kPrimaryFlag, version.primaryFlag_) != 0) return -1;
  if (it.setValue(Tag::kSecondaryFlag, version.secondaryFlag_) != 0) return -1;
  // The holder is written even for no templates; it reads back as an empty list either way.
  const auto templates = MBQ::MBQWriterList(KTRTemplate::Writer(), Tag::kPackage);
  return MBQ::MBQWriterID(templates, Tag::kTemplateList)(it, version.templates_);
}

// ---------------------------------------------------------------- KTRPackageInfo

int KTRPackageInfo::Reader::operator()(const MBQMessageIterator& it, KTRPackageInfo& info) const {
  if (it.getValue(Tag::kKey, info.name_) != 0) return -1;
  if (it.getValue(Tag::kDetail, info.detail_) != 0) return -1;
  if (it.getValue(Tag::kType, info.type_) != 0) return -1;
  info.versions_.clear();
  return MBQ::MBQReaderList(KTRPackageVersion::Reader(), Tag::kRelease)(it, info.versions_);
}

int KTRPackageInfo::Writer::operator()(MBQMessageIterator& it, const KTRPackageInfo& info) const {
  if (it.setValue(Tag::kKey, info.name_) != 0) return -1;
  if (it.setValue(Tag::kDetail, info.detail_) != 0) return -1;
  if (it.setValue(Tag::kType, info.type_) != 0) return -1;
  return MBQ::MBQWriterList(KTRPackageVersion::Writer(), Tag::kRelease)(it, info.versions_);
}

}  // namespace KTR
