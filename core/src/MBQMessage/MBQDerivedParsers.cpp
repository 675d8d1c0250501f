#include "MBQMessage/MBQDerivedParsers.h"

#include <map>
#include <memory>
#include <string>

#include "MBQCore/MBQAbort.h"
#include "MBQMessage/MBQTagTable.h"

namespace MBQ {

namespace {

// The location the registration checks report; it names the unit, not this file's path.
constexpr const char* kPath = "core/src/MBQMessage/MBQDerivedParsers";

std::map<std::string, std::unique_ptr<MBQDerivedParserRegistry>>& registries() {
  static auto* all = new std::map<std::string, std::unique_ptr<MBQDerivedParserRegistry>>();
  // Never destroyed: factories of libraries unloaded during exit still deregister into it.
  return *all;
}

void eraseValue(std::map<std::string, MBQDerivedParserFactoryBase*>& map, const std::string& key,
                const MBQDerivedParserFactoryBase* factory) {
  auto found = map.find(key);
  if (found != map.end() && found->second == factory) map.erase(found);
}

}  // namespace

MBQDerivedParserRegistry& derivedParserRegistry(const char* baseTypeName) {
  auto& slot = registries()[baseTypeName];
  if (!slot) slot = std::make_unique<MBQDerivedParserRegistry>();
  return *slot;
}

std::string composeSchemaName(const char* strNS, const char* strType, int nsId, int typeId) {
  std::string name;
  if (strType != nullptr && *strType != '\0') {
    if (strNS != nullptr && *strNS != '\0') {
      name = strNS;
      name += ':';
    }
    name += strType;
    return name;
  }
  if (const char* ns = MBQDefaultMap::findNSID(nsId)) {
    name = ns;
    if (!name.empty()) name += ':';
  }
  if (const char* type = MBQDefaultMap::findTypeID(typeId)) name += type;
  return name;
}

MBQDerivedParserFactoryBase::~MBQDerivedParserFactoryBase() {
  if (registry_ == nullptr) return;
  eraseValue(registry_->byName, schemaName_, this);
  eraseValue(registry_->byType, runtimeTypeName_, this);
  if (registry_->defaultFactory == this) registry_->defaultFactory = nullptr;
}

void MBQDerivedParserFactoryBase::addFactory(MBQDerivedParserRegistry& registry, bool isDefault,
                                             const char* runtimeTypeName, const char* strNS,
                                             const char* strType, int nsId, int typeId) {
  Debug::check(strNS != nullptr, "MBQMessage", kPath, 237, "addFactory");
  Debug::check(strType != nullptr, "MBQMessage", kPath, 238, "addFactory");
  schemaName_ = composeSchemaName(strNS, strType, nsId, typeId);
  runtimeTypeName_ = runtimeTypeName;
  Debug::check(registry.byName.emplace(schemaName_, this).second, "MBQMessage", kPath, 269, "addFactory");
  Debug::check(registry.byType.emplace(runtimeTypeName_, this).second, "MBQMessage", kPath, 271, "addFactory");
  if (isDefault) {
    Debug::check(registry.defaultFactory == nullptr, "MBQMessage", kPath, 274, "addFactory");
    registry.defaultFactory = this;
  }
  registry_ = &registry;
}

}  // namespace MBQ
