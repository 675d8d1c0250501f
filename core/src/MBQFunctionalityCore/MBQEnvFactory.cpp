#include "MBQFunctionalityCore/MBQEnvFactory.h"

#include <utility>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"

namespace MBQ {

MBQEnvChildFactory::~MBQEnvChildFactory() = default;

MBQEnvFactory& MBQEnvFactory::getInstance() {
  // Never destroyed: technology libraries unregister from their own static destructors, which
  // may run after this library's would have.
  static auto* instance = new MBQEnvFactory();
  return *instance;
}

void MBQEnvFactory::registerEnv(const Key& type, std::shared_ptr<MBQEnvChildFactory> factory) {
  if (!factory) MBQ::abort("MBQFunctionalityCore", "core/src/MBQFunctionalityCore/MBQEnv", 315, "registerEnv");
  std::lock_guard<std::mutex> guard(mutex_);
  factories_[type] = std::move(factory);
}

void MBQEnvFactory::unregisterEnv(const Key& type) {
  std::lock_guard<std::mutex> guard(mutex_);
  factories_.erase(type);
}

std::shared_ptr<MBQEnvChildFactory> MBQEnvFactory::findEnv(const Key& type) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto found = factories_.find(type);
  return found == factories_.end() ? nullptr : found->second;
}

std::shared_ptr<MBQEnv> MBQEnvFactory::createEnv(const Key& type) const {
  auto factory = findEnv(type);
  if (!factory) {
    setErrorMessage("no container technology '%s' is registered", type.c_str());
    return nullptr;
  }
  return factory->createEnv();
}

}  // namespace MBQ
