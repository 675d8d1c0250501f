#include "KTRFunctionality/KTRTEM.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;
constexpr const char* kUpToDate = "uptodate";
constexpr const char* kTechnology = "technology";

int writeTechnologies(MBQMessageIterator& it, const std::vector<std::string>& technologies) {
  return MBQ::MBQWriterData(technologies, kTechnology)(it, technologies);
}

// Never fails: a template without technologies is valid, so only what is present counts.
std::vector<std::string> readTechnologies(const MBQMessageIterator& it) {
  std::vector<std::string> technologies;
  MBQ::MBQReaderData(technologies, kTechnology, MBQ::MBQReaderOptional)(it, technologies);
  return technologies;
}

// The registrations with the MBQPackage registry live as long as the library.
MBQ::MBQDerivedParserFactoryT<KTRPackageHQTemplate, MBQ::MBQPackage> hqTemplateFactory(false);
MBQ::MBQDerivedParserFactoryT<KTRPackageHQTemplateStd, MBQ::MBQPackage> stdHqTemplateFactory(false);

}  // namespace

// ---------------------------------------------------------------- KTRDistribution

const MBQ::MBQLayout<KTRDistribution>& KTRDistribution::layout() {
  static const MBQ::MBQLayout<KTRDistribution> layout{MBQ::required(Tag::kName, &KTRDistribution::name_)};
  return layout;
}

// ---------------------------------------------------------------- KTRArchitectureSelector

const char* const KTRArchitectureSelector::SUPPORTED[3] = {"ia64", "x86", "x86_64"};

bool KTRArchitectureSelector::operator()(const std::string& name) const {
  return std::binary_search(std::begin(SUPPORTED), std::end(SUPPORTED), name.c_str(),
                            [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
}

bool KTRArchitectureSelector::operator()(const char* name) const {
  if (name == nullptr) return false;
  return std::any_of(std::begin(SUPPORTED), std::end(SUPPORTED),
                     [name](const char* entry) { return std::strcmp(entry, name) == 0; });
}

std::string KTRArchitectureSelector::getArch(const std::vector<std::string>& technologies) {
  const KTRArchitectureSelector isSupported;
  const auto found = std::find_if(technologies.begin(), technologies.end(), isSupported);
  return found == technologies.end() ? std::string() : *found;
}

// ---------------------------------------------------------------- KTRTemplateConfigInfo

KTRTemplateConfigInfo::~KTRTemplateConfigInfo() = default;

int KTRTemplateConfigInfo::Reader::operator()(const MBQMessageIterator& it, KTRTemplateConfigInfo& info) const {
  if (KTRPackageVersion::Reader()(it, info) != 0) return -1;
  if (it.getValue(Tag::kKey, info.name_) != 0) return -1;
  if (it.getValue(Tag::kConfigText2, info.configText2_) != 0) return -1;

  info.settings_.clear();
  const auto settingKey = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), Tag::kName);
  const auto settingValue = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), Tag::kValue);
  const auto settings = MBQ::MBQReaderMap(Tag::kItem, MBQ::MBQReaderOptional, settingKey, settingValue);
  MBQ::MBQReaderID(settings, Tag::kSettings, MBQ::MBQReaderOptional)(it, info.settings_);

  info.packages_.clear();
  const auto packageName = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), Tag::kKey);
  if (MBQ::MBQReaderMap(Tag::kPackage, MBQ::MBQReaderRequired, packageName, KTRPackage::Reader())(it, info.packages_) != 0)
    return -1;

  // Descriptive texts that older template formats lack.
  it.getValue(Tag::kDetail, info.detail_);
  it.getValue(Tag::kConfigText4, info.configText4_);
  it.getValue(Tag::kConfigText5, info.configText5_);
  info.technologies_ = readTechnologies(it);
  return 0;
}

int KTRTemplateConfigInfo::Writer::operator()(MBQMessageIterator& it, const KTRTemplateConfigInfo& info) const {
  if (KTRPackageVersion::Writer()(it, info) != 0) return -1;
  if (it.setValue(Tag::kKey, info.name_) != 0) return -1;
  if (it.setValue(Tag::kConfigText2, info.configText2_) != 0) return -1;

  const auto settingKey = MBQ::MBQWriterID(MBQ::MBQWriterValue<std::string>(), Tag::kName);
  const auto settingValue = MBQ::MBQWriterID(MBQ::MBQWriterValue<std::string>(), Tag::kValue);
  const auto settings = MBQ::MBQWriterMap(Tag::kItem, settingKey, settingValue);
  if (MBQ::MBQWriterID(settings, Tag::kSettings)(it, info.settings_) != 0) return -1;

  // A package carries its name itself, and that name is the key the reader files it under.
  for (const auto& entry : info.packages_)
    if (MBQ::MBQWriterID(KTRPackage::Writer(), Tag::kPackage)(it, entry.second) != 0) return -1;

  if (it.setValue(Tag::kDetail, info.detail_) != 0) return -1;
  if (it.setValue(Tag::kConfigText4, info.configText4_) != 0) return -1;
  if (it.setValue(Tag::kConfigText5, info.configText5_) != 0) return -1;
  return writeTechnologies(it, info.technologies_);
}

// ---------------------------------------------------------------- KTRPackageHQTemplate

KTRPackageHQTemplate::~KTRPackageHQTemplate() = default;

void KTRPackageHQTemplate::setTechnologyList(const std::vector<std::string>& technologies) {
  technologies_ = technologies;
  // An empty list says nothing about the architecture, so a template read without
  // technologies keeps the one it had.
  if (!technologies.empty()) architecture_ = KTRArchitectureSelector::getArch(technologies);
}

int KTRPackageHQTemplate::Reader::operator()(const MBQMessageIterator& it, KTRPackageHQTemplate& tmpl) const {
  if (MBQ::MBQPackage::Reader()(it, tmpl) != 0) return -1;
  it.getValue(Tag::kOsTemplate, tmpl.osTemplate_);
  it.getValue(Tag::kSecondaryFlag, tmpl.secondaryFlag_);
  it.getValue(kUpToDate, tmpl.upToDate_);
  it.getValue(Tag::kPath, tmpl.value_);
  tmpl.setTechnologyList(readTechnologies(it));
  return 0;
}

int KTRPackageHQTemplate::Writer::operator()(MBQMessageIterator& it, const KTRPackageHQTemplate& tmpl) const {
  // The base part goes into this same element without a typed write of its own; only the
  // derived type on the element lets a reader choose this class again.
  if (MBQ::MBQPackage::Writer()(it, tmpl) != 0) return -1;
  if (it.setValue(Tag::kOsTemplate, tmpl.osTemplate_) != 0) return -1;
  if (it.setValue(Tag::kSecondaryFlag, tmpl.secondaryFlag_) != 0) return -1;
  if (it.setValue(kUpToDate, tmpl.upToDate_) != 0) return -1;
  if (it.setValue(Tag::kPath, tmpl.value_) != 0) return -1;
  return writeTechnologies(it, tmpl.technologies_);
}

// ---------------------------------------------------------------- KTRPackageHQTemplateStd

KTRPackageHQTemplateStd::~KTRPackageHQTemplateStd() = default;

// The base part goes in untyped: the element keeps "package_std_hqtemplateType".
const MBQ::MBQLayout<KTRPackageHQTemplateStd>& KTRPackageHQTemplateStd::layout() {
  using R = KTRPackageHQTemplateStd;
  static const MBQ::MBQLayout<R> layout{MBQ::base<R, KTRPackageHQTemplate>(),
                                        MBQ::lenient(MBQ::optional(Tag::kPrimaryFlag, &R::primaryFlag_))};
  return layout;
}

}  // namespace KTR
