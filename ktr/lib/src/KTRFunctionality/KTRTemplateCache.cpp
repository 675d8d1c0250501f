#include "KTRFunctionality/KTRTemplateCache.h"

#include "MBQCore/MBQError.h"
#include "MBQCore/MBQGUID.h"
#include "MBQCore/MBQLock.h"
#include "MBQCore/MBQLogger.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

const char* const kModule = "KTRFunctionality";

MBQ::MBQLock instanceLock;
KTRTemplateCachePrototypeSP instance;

std::string guidText(const MBQ::MBQEID& id) {
  MBQ::MBQGUID guid;
  return guid.fromString(id.toString()) == 0 ? guid.toString() : id.toString();
}

}  // namespace

std::string KTRTemplateObject::getStringID() const {
  std::string key = getName() + "." + getArchitecture() + "." + getVersion() + ".";
  if (!isOsTemplate()) key += getOsName().get();
  key += "." + getOsVersion().get();
  if (!eids_.getIds().empty()) key += "." + guidText(eids_.getIds().front());
  return key;
}

int KTRTemplateObject::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRTemplateObject& object) const {
  MBQ::MBQEIDList eids;
  if (it.descend(Tag::kEidSet) == 0) {
    const int result = MBQ::MBQEIDList::Reader()(it, eids);
    it.up();
    if (result != 0) return -1;
  }
  if (!it.hasChild(Tag::kPackage)) return -1;
  KTRPackageHQTemplate tmpl(object);
  if (it.getObject(tmpl, KTRPackageHQTemplate::Reader(), Tag::kPackage) != 0) return -1;
  static_cast<KTRPackageHQTemplate&>(object) = tmpl;
  object.eids_ = eids;
  return 0;
}

int KTRTemplateObject::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRTemplateObject& object) const {
  if (it.setValue(Tag::kName, object.getStringID()) != 0) return -1;
  if (it.addChildAndDescend(Tag::kEidSet) != 0) return -1;
  const int result = MBQ::MBQEIDList::Writer()(it, object.eids_);
  it.up();
  if (result != 0) return -1;
  return it.putObject(static_cast<const KTRPackageHQTemplate&>(object), KTRPackageHQTemplate::Writer(), Tag::kPackage);
}

int KTRTemplateObject::toBytes(std::string& bytes) const {
  MBQ::MBQMessage message("template");
  auto it = message.iterator();
  if (Writer()(*it, *this) != 0) {
    MBQ::setErrorMessage("can't write template %s", getStringID().c_str());
    return -1;
  }
  bytes = message.toString();
  return 0;
}

int KTRTemplateObject::fromBytes(const char* data, std::size_t size) {
  MBQ::MBQMessage message;
  if (message.parse(data, size) != 0) return -1;
  auto it = message.iterator();
  KTRTemplateObject read;
  if (Reader()(*it, read) != 0) return -1;
  *this = read;
  return 0;
}

KTRTemplateCachePrototype::KTRTemplateCachePrototype(const std::string& path)
    : KTRTemplateCacheLogic(path, 0x1000000, 16, 0x40000000) {}

KTRTemplateCachePrototype::~KTRTemplateCachePrototype() = default;

KTRTemplateCachePrototypeSP KTRTemplateCachePrototype::open(const std::string& path, int* code) {
  KTRTemplateCachePrototypeSP cache(new KTRTemplateCachePrototype(path));
  int result = cache->initialize(true, true);
  if (result != 0) {
    MBQ::Logger::put(MBQ::kWarning, kModule, "template cache %s refused (%d): %s; making it anew", path.c_str(),
                     result, MBQ::getErrorMessage().c_str());
    MBQ::removeLockedCacheFile(path, result);
    result = cache->initialize(true, false);
  }
  if (code != nullptr) *code = result;
  if (result != 0) {
    MBQ::setErrorMessage("can't open template cache %s: code %d", path.c_str(), result);
    return KTRTemplateCachePrototypeSP();
  }
  return cache;
}

KTRTemplateCachePrototypeSP KTRTemplateCachePrototype::createInstance() {
  MBQ::MBQGuardT<MBQ::MBQLock> guard(instanceLock);
  if (instance && instance->isAccessible()) return instance;
  instance.reset();
  KTRTemplateCachePrototypeSP cache = open(MBQ::MBQInstanceFolders::uploads() + "/" + kFileName);
  if (cache) instance = cache;
  return instance;
}

int KTRTemplateCachePrototype::insert(const KTRTemplateObject& object) {
  const std::string key = object.getStringID();
  if (key.size() > KTRTemplateCacheKey::capacity()) {
    MBQ::setErrorMessage("template key of %zu characters is too long for the cache", key.size());
    return -1;
  }
  std::string bytes;
  if (object.toBytes(bytes) != 0) return -1;
  return KTRTemplateCacheLogic::insert(KTRTemplateCacheKey(key), bytes);
}

int KTRTemplateCachePrototype::lookup(const std::string& key, KTRTemplateObject& object) {
  if (key.size() > KTRTemplateCacheKey::capacity()) return 1;
  std::string bytes;
  const int result = KTRTemplateCacheLogic::lookup(KTRTemplateCacheKey(key), bytes);
  if (result != 0) return result;
  if (object.fromBytes(bytes.data(), bytes.size()) != 0) {
    MBQ::setErrorMessage("cached template %s does not read", key.c_str());
    return -1;
  }
  return 0;
}

int KTRTemplateCachePrototype::remove(const std::string& key) {
  if (key.size() > KTRTemplateCacheKey::capacity()) return 1;
  return KTRTemplateCacheLogic::remove(KTRTemplateCacheKey(key));
}

}  // namespace KTR
