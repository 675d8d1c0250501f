#include "KTRFunctionality/KTRTEM.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kNameTag = 1026;
constexpr int kConfigText2Tag = 1501;
constexpr int kSettingsTag = 1502;
constexpr int kSettingItemTag = 1017;
constexpr int kSettingKeyTag = 1010;
constexpr int kSettingValueTag = 1018;
constexpr int kPackageTag = 1295;
constexpr int kDetailTag = 1496;
constexpr int kConfigText4Tag = 1846;
constexpr int kConfigText5Tag = 2005;
constexpr int kOsTemplateTag = 1733;
constexpr int kSecondaryFlagTag = 1499;
constexpr int kPrimaryFlagTag = 1498;
constexpr int kValueTag = 1156;
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

int KTRDistribution::Reader::operator()(const MBQMessageIterator& it, KTRDistribution& record) const {
  return it.getValue(1010, record.name_);
}

int KTRDistribution::Writer::operator()(MBQMessageIterator& it, const KTRDistribution& record) const {
  return it.setValue(1010, record.name_);
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
  if (it.getValue(kNameTag, info.name_) != 0) return -1;
  if (it.getValue(kConfigText2Tag, info.configText2_) != 0) return -1;

  info.settings_.clear();
  const auto settingKey = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), kSettingKeyTag);
  const auto settingValue = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), kSettingValueTag);
  const auto settings = MBQ::MBQReaderMap(kSettingItemTag, MBQ::MBQReaderOptional, settingKey, settingValue);
  MBQ::MBQReaderID(settings, kSettingsTag, MBQ::MBQReaderOptional)(it, info.settings_);

  info.packages_.clear();
  const auto packageName = MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), kNameTag);
  if (MBQ::MBQReaderMap(kPackageTag, MBQ::MBQReaderRequired, packageName, KTRPackage::Reader())(it, info.packages_) != 0)
    return -1;

  // Descriptive texts that older template formats lack.
  it.getValue(kDetailTag, info.detail_);
  it.getValue(kConfigText4Tag, info.configText4_);
  it.getValue(kConfigText5Tag, info.configText5_);
  info.technologies_ = readTechnologies(it);
  return 0;
}

int KTRTemplateConfigInfo::Writer::operator()(MBQMessageIterator& it, const KTRTemplateConfigInfo& info) const {
  if (KTRPackageVersion::Writer()(it, info) != 0) return -1;
  if (it.setValue(kNameTag, info.name_) != 0) return -1;
  if (it.setValue(kConfigText2Tag, info.configText2_) != 0) return -1;

  const auto settingKey = MBQ::MBQWriterID(MBQ::MBQWriterValue<std::string>(), kSettingKeyTag);
  const auto settingValue = MBQ::MBQWriterID(MBQ::MBQWriterValue<std::string>(), kSettingValueTag);
  const auto settings = MBQ::MBQWriterMap(kSettingItemTag, settingKey, settingValue);
  if (MBQ::MBQWriterID(settings, kSettingsTag)(it, info.settings_) != 0) return -1;

  // A package carries its name itself, and that name is the key the reader files it under.
  for (const auto& entry : info.packages_)
    if (MBQ::MBQWriterID(KTRPackage::Writer(), kPackageTag)(it, entry.second) != 0) return -1;

  if (it.setValue(kDetailTag, info.detail_) != 0) return -1;
  if (it.setValue(kConfigText4Tag, info.configText4_) != 0) return -1;
  if (it.setValue(kConfigText5Tag, info.configText5_) != 0) return -1;
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
  it.getValue(kOsTemplateTag, tmpl.osTemplate_);
  it.getValue(kSecondaryFlagTag, tmpl.secondaryFlag_);
  it.getValue(kUpToDate, tmpl.upToDate_);
  it.getValue(kValueTag, tmpl.value_);
  tmpl.setTechnologyList(readTechnologies(it));
  return 0;
}

int KTRPackageHQTemplate::Writer::operator()(MBQMessageIterator& it, const KTRPackageHQTemplate& tmpl) const {
  // The base part goes into this same element without a typed write of its own; only the
  // derived type on the element lets a reader choose this class again.
  if (MBQ::MBQPackage::Writer()(it, tmpl) != 0) return -1;
  if (it.setValue(kOsTemplateTag, tmpl.osTemplate_) != 0) return -1;
  if (it.setValue(kSecondaryFlagTag, tmpl.secondaryFlag_) != 0) return -1;
  if (it.setValue(kUpToDate, tmpl.upToDate_) != 0) return -1;
  if (it.setValue(kValueTag, tmpl.value_) != 0) return -1;
  return writeTechnologies(it, tmpl.technologies_);
}

// ---------------------------------------------------------------- KTRPackageHQTemplateStd

KTRPackageHQTemplateStd::~KTRPackageHQTemplateStd() = default;

int KTRPackageHQTemplateStd::Reader::operator()(const MBQMessageIterator& it, KTRPackageHQTemplateStd& tmpl) const {
  if (KTRPackageHQTemplate::Reader()(it, tmpl) != 0) return -1;
  it.getValue(kPrimaryFlagTag, tmpl.primaryFlag_);
  return 0;
}

int KTRPackageHQTemplateStd::Writer::operator()(MBQMessageIterator& it, const KTRPackageHQTemplateStd& tmpl) const {
  // Untyped call of the base writer: the element keeps "package_std_hqtemplateType".
  if (KTRPackageHQTemplate::Writer()(it, tmpl) != 0) return -1;
  return it.setValue(kPrimaryFlagTag, tmpl.primaryFlag_);
}

}  // namespace KTR
