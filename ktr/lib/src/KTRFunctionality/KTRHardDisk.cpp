#include "KTRFunctionality/KTRHardDisk.h"

#include <iterator>
#include <map>
#include <memory>

#include "KTRFunctionality/KTRConverters.h"
#include "KTRFunctionality/KTRDiskConverter.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRFormat.h"
#include "KTRFunctionality/KTRLibFunctionality.h"
#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;
namespace HardDisk {

namespace {

constexpr const char* kSourcePath = "ktr/lib/src/KTRFunctionality/KTRHardDisk";
constexpr const char* kExpanded = "expanded";

using GuidReader = MBQ::MBQDefaultReader<MBQ::MBQGUID>;
using GuidWriter = MBQ::MBQDefaultWriter<MBQ::MBQGUID>;

const std::string& valueOf(const std::map<std::string, std::string>& items, const char* name) {
  static const std::string kNone;
  const auto found = items.find(name);
  return found == items.end() ? kNone : found->second;
}

// The replace guard of KTREnvConfig::setHardDisks: non-zero when the list points at storage
// that exists, which must not be swapped out under the container.
class Validator : public List::Visitor {
 public:
  int visit(List::HqFS& list) override { return list.disk().path().empty() ? 0 : 1; }
  int visit(List::Images<Dromo>&) override { return 0; }
  int visit(List::Images<Loopback>& list) override {
    // Only the first disk tells: loopback lists are created and destroyed whole.
    MBQ::Debug::check(!list.disks().empty(), kModuleName, kSourcePath, __LINE__, "Validator::visit");
    return list.disks().front().uuid().isValid() ? 1 : 0;
  }
};

}  // namespace

// ---------------------------------------------------------------- HqFS

HqFS::HqFS(const MBQ::MBQQoS& first, const MBQ::MBQQoS& second) : first_(first), second_(second) {}

bool operator==(const HqFS& a, const HqFS& b) {
  return a.path_ == b.path_ && a.first_ == b.first_ && a.second_ == b.second_;
}

int HqFS::Reader::operator()(const MBQ::MBQMessageIterator& it, HqFS& disk) const {
  // Each field is taken when it reads; a disk described in part is still a disk.
  it.getValue(Tag::kPath, disk.path_);
  it.getObject(disk.first_, MBQ::MBQQoS::Reader(), Tag::kHqfsQuota);
  it.getObject(disk.second_, MBQ::MBQQoS::Reader(), Tag::kQuotaSetting);
  return 0;
}

int HqFS::Writer::operator()(MBQ::MBQMessageIterator& it, const HqFS& disk) const {
  if (!disk.path_.empty() && it.setValue(Tag::kPath, disk.path_) != 0) return -1;
  const int rc = MBQ::MBQWriterID(MBQ::MBQQoS::Writer(), Tag::kHqfsQuota)(it, disk.first_);
  if (rc != 0) return rc;
  return MBQ::MBQWriterID(MBQ::MBQQoS::Writer(), Tag::kQuotaSetting)(it, disk.second_);
}

// ---------------------------------------------------------------- Dromo

Dromo::Dromo(long long size, bool expanded) : expanded_(expanded), size_(size) {}

bool operator==(const Dromo& a, const Dromo& b) {
  return a.expanded_ == b.expanded_ && a.image_ == b.image_ && a.uuid_ == b.uuid_ && a.size_ == b.size_;
}

std::string Dromo::toString() const {
  // A map orders the names, which is the order the DISK format has always had.
  const std::map<std::string, std::string> items{
      {"image", image_}, {"size", MBQ::longlongToStr(size_)}, {"uuid", "{" + uuid_.toString() + "}"}};
  std::string text;
  Format::Save(items, ',', text, Format::NameValue<'='>());
  return text;
}

void Dromo::fromString(const std::string& text) {
  std::map<std::string, std::string> items;
  Format::Load(text, ",", std::inserter(items, items.end()), Format::NameValue<'='>());
  // A disk whose uuid does not parse is left alone rather than half-filled.
  if (uuid_.fromString(valueOf(items, "uuid")) != 0) return;
  size_ = MBQ::strToLonglong(valueOf(items, "size"));
  // A disk of no size has no image yet, whatever the text names.
  if (size_ > 0) image_ = valueOf(items, "image");
}

int Dromo::Reader::operator()(const MBQ::MBQMessageIterator& it, Dromo& disk) const {
  it.getObject(disk.uuid_, GuidReader(), Tag::kName);
  it.getValue(Tag::kPath, disk.image_);
  it.getValue(Tag::kSize, disk.size_);
  disk.expanded_ = it.hasChild(kExpanded);
  return 0;
}

int Dromo::Writer::operator()(MBQ::MBQMessageIterator& it, const Dromo& disk) const {
  if (disk.uuid_.isValid() && MBQ::MBQWriterID(GuidWriter(), Tag::kName)(it, disk.uuid_) != 0) return -1;
  if (disk.image_.empty()) return 0;
  if (it.setValue(Tag::kPath, disk.image_) != 0) return -1;
  int rc = it.setValue(Tag::kSize, disk.size_);
  if (rc == 0 && disk.expanded_) rc = it.addChild(kExpanded);
  return rc;
}

// ---------------------------------------------------------------- Loopback

Loopback::Loopback() : mount_("", "", "auto", 0, 0, 0) {}

Loopback::Loopback(const MBQ::MBQDevMountInfo& mount) : mount_(mount) {}

bool operator==(const Loopback& a, const Loopback& b) { return a.uuid_ == b.uuid_ && a.mount_ == b.mount_; }

int Loopback::Reader::operator()(const MBQ::MBQMessageIterator& it, Loopback& disk) const {
  it.getObject(disk.uuid_, GuidReader(), Tag::kName);
  return MBQ::MBQDevMountInfo::Reader()(it, disk.mount_);
}

int Loopback::Writer::operator()(MBQ::MBQMessageIterator& it, const Loopback& disk) const {
  if (disk.uuid_.isValid() && MBQ::MBQWriterID(GuidWriter(), Tag::kName)(it, disk.uuid_) != 0) return -1;
  return MBQ::MBQDevMountInfo::Writer()(it, disk.mount_);
}

// ---------------------------------------------------------------- lists

namespace List {

Base::~Base() = default;

Visitor::~Visitor() = default;

int HqFS::accept(Visitor& visitor) { return visitor.visit(*this); }

int HqFS::Reader::operator()(const MBQ::MBQMessageIterator& it, HqFS& list) const {
  return MBQ::MBQReaderID(HardDisk::HqFS::Reader(), Tag::kDiskEntry)(it, list.disk_);
}

int HqFS::Writer::operator()(MBQ::MBQMessageIterator& it, const HqFS& list) const {
  return MBQ::MBQWriterID(HardDisk::HqFS::Writer(), Tag::kDiskEntry)(it, list.disk_);
}

template <class T>
int Images<T>::Reader::operator()(const MBQ::MBQMessageIterator& it, Images& list) const {
  return MBQ::MBQReaderList(typename T::Reader(), Tag::kDiskEntry)(it, list.disks_);
}

template <class T>
int Images<T>::Writer::operator()(MBQ::MBQMessageIterator& it, const Images& list) const {
  if (list.disks_.empty()) {
    MBQ::setErrorMessage("an empty %s disk list has no message form", getStrTypeID());
    return -1;
  }
  return MBQ::MBQWriterList(typename T::Writer(), Tag::kDiskEntry)(it, list.disks_);
}

template class Images<Dromo>;
template class Images<Loopback>;

}  // namespace List

int validateReplacement(const List::Base& current) {
  Validator validator;
  // accept() is not const because visitors in general may change the list; this one does not.
  return const_cast<List::Base&>(current).accept(validator);
}

namespace {

// Disk lists in messages: the schema type of a "disk_list" element picks the list class.
const MBQ::MBQDerivedParserFactoryT<List::HqFS, List::Base> hqfsListFactory;
const MBQ::MBQDerivedParserFactoryT<List::Images<Dromo>, List::Base> dromoListFactory;
const MBQ::MBQDerivedParserFactoryT<List::Images<Loopback>, List::Base> loopbackListFactory;

}  // namespace
}  // namespace HardDisk

// ---------------------------------------------------------------- the DISK value

namespace Disk {

int Save::visit(HardDisk::List::HqFS&) {
  text_.clear();
  return kNoTextForm;
}

int Save::visit(HardDisk::List::Images<HardDisk::Loopback>&) {
  text_.clear();
  return kNoTextForm;
}

int Save::visit(HardDisk::List::Images<HardDisk::Dromo>& list) {
  return Format::Save(list.disks(), ';', text_, ToStringConverter<HardDisk::Dromo>());
}

namespace {

// The "disk" parameter of a container's configuration file, both directions.
struct Converter {
  int operator()(const std::string& /*name*/, const std::string& text, KTREnvConfig& config) const {
    HardDisk::List::Images<HardDisk::Dromo> disks;
    const int rc = Format::Load(text, ";", std::back_inserter(disks.disks()), FromStringConverter<HardDisk::Dromo>());
    if (rc != 0) return rc;
    return config.setHardDisks(&disks);
  }

  int operator()(const std::string& name, const KTREnvConfig& config, std::string& out) const {
    std::shared_ptr<HardDisk::List::Base> disks;
    int rc = config.getHardDisks(disks);
    if (!disks) return rc;
    Save save;
    rc = disks->accept(save);
    if (rc != 0) {
      MBQ::setErrorMessage("%s: the container's disks have no text form", name.c_str());
      return rc;
    }
    out = save.result();
    return 0;
  }
};

}  // namespace

int readDisks(const std::string& name, const std::string& text, KTREnvConfig& config) {
  return Converter()(name, text, config);
}

int writeDisks(const std::string& name, const KTREnvConfig& config, std::string& out) {
  return Converter()(name, config, out);
}

}  // namespace Disk
}  // namespace KTR
