#include "KTRFunctionality/KTRPkgM.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

using MBQ::lenient;
using MBQ::list;
using MBQ::listIn;
using MBQ::optional;
using MBQ::required;
using MBQ::requiredList;

// ---------------------------------------------------------------- KTRTemplate

int KTRTemplate::fromString(const std::string& text) {
  name_ = text;
  release_.clear();
  return 0;
}

const MBQ::MBQLayout<KTRTemplate>& KTRTemplate::layout() {
  // Templates named in a container file have no release, so its absence is not an error.
  static const MBQ::MBQLayout<KTRTemplate> layout{lenient(optional(Tag::kRelease, &KTRTemplate::release_)),
                                                  required(Tag::kKey, &KTRTemplate::name_)};
  return layout;
}

// ---------------------------------------------------------------- KTRPackage

KTRPackage::~KTRPackage() = default;

const MBQ::MBQLayout<KTRPackage>& KTRPackage::layout() {
  static const MBQ::MBQLayout<KTRPackage> layout{lenient(list(Tag::kPackageText, &KTRPackage::texts_)),
                                                 lenient(optional(Tag::kPackageFlag, &KTRPackage::flag_)),
                                                 MBQ::base<KTRPackage, KTRTemplate>()};
  return layout;
}

// ---------------------------------------------------------------- KTRPackageVersion

KTRPackageVersion::~KTRPackageVersion() = default;

const MBQ::MBQLayout<KTRPackageVersion>& KTRPackageVersion::layout() {
  using R = KTRPackageVersion;
  // The holder is written even for no templates; it reads back as an empty list either way.
  static const MBQ::MBQLayout<R> layout{
      required(Tag::kVersionText, &R::versionText_), required(Tag::kPrimaryFlag, &R::primaryFlag_),
      lenient(optional(Tag::kSecondaryFlag, &R::secondaryFlag_)),
      lenient(listIn(Tag::kTemplateList, Tag::kPackage, &R::templates_, KTRTemplate::Reader(), KTRTemplate::Writer()))};
  return layout;
}

// ---------------------------------------------------------------- KTRPackageInfo

const MBQ::MBQLayout<KTRPackageInfo>& KTRPackageInfo::layout() {
  using R = KTRPackageInfo;
  static const MBQ::MBQLayout<R> layout{
      required(Tag::kKey, &R::name_), required(Tag::kDetail, &R::detail_), required(Tag::kType, &R::type_),
      requiredList(Tag::kRelease, &R::versions_, KTRPackageVersion::Reader(), KTRPackageVersion::Writer())};
  return layout;
}

}  // namespace KTR
