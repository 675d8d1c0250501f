#include "MBQFunctionalityCore/MBQPackage.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {
constexpr const char* kOsName = "os_name";
constexpr const char* kOsVersion = "os_version";

using OptionalText = MBQOptionalProperty<std::string>;

}  // namespace

MBQPackage::~MBQPackage() = default;

int MBQPackage::Reader::operator()(const MBQMessageIterator& it, MBQPackage& package) const {
  std::string name;
  std::string version;
  if (it.getValue(Tag::kKey, name) != 0 || it.getValue(Tag::kRelease, version) != 0) return -1;
  const auto readOptional = [&it](const char* element) {
    OptionalText property;
    MBQReaderID(MBQDefaultReader<OptionalText>(), element, MBQReaderOptional)(it, property);
    return property;
  };
  const OptionalText osName = readOptional(kOsName);
  const OptionalText osVersion = readOptional(kOsVersion);
  package.name_ = name;
  package.version_ = version;
  package.osName_ = osName;
  package.osVersion_ = osVersion;
  return 0;
}

int MBQPackage::Writer::operator()(MBQMessageIterator& it, const MBQPackage& package) const {
  if (it.setValue(Tag::kKey, package.name_) != 0) return -1;
  if (it.setValue(Tag::kRelease, package.version_) != 0) return -1;
  if (MBQWriterID(MBQDefaultWriter<OptionalText>(), kOsName)(it, package.osName_) != 0) return -1;
  return MBQWriterID(MBQDefaultWriter<OptionalText>(), kOsVersion)(it, package.osVersion_);
}

}  // namespace MBQ
