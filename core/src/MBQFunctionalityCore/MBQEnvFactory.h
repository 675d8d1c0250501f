#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "MBQCore/MBQExport.h"
#include "MBQCore/limited_length_string.h"

namespace MBQ {

class MBQEnv;
class MBQVEnvConfig;

// Creates the container record and configuration of one container technology.
class MBQ_EXPORT MBQEnvChildFactory {
 public:
  virtual ~MBQEnvChildFactory();
  virtual std::shared_ptr<MBQEnv> createEnv() const = 0;
  virtual std::shared_ptr<MBQVEnvConfig> createVirtualConfig() const = 0;
};

// The child factory of a technology whose records are `Env` (an MBQEnv) and `Config` (an
// MBQVEnvConfig). Instantiated by the technology's library, where both types are complete.
template <class Env, class Config>
class MBQEnvChildFactoryT : public MBQEnvChildFactory {
 public:
  std::shared_ptr<MBQEnv> createEnv() const override { return std::make_shared<Env>(); }
  std::shared_ptr<MBQVEnvConfig> createVirtualConfig() const override { return std::make_shared<Config>(); }
};

// The process-wide container factory: one child factory per technology key (at most 16
// characters, e.g. "quellix"). Technology libraries register at load and unregister at unload.
class MBQ_EXPORT MBQEnvFactory {
 public:
  using Key = limited_length_string<16>;

  static MBQEnvFactory& getInstance();

  // Stores the factory under the key, replacing an earlier one. A null factory is a programming
  // error and ends the process.
  void registerEnv(const Key& type, std::shared_ptr<MBQEnvChildFactory> factory);
  // Removes the key's factory; an unknown key is ignored.
  void unregisterEnv(const Key& type);

  // The factory of a technology, or null.
  std::shared_ptr<MBQEnvChildFactory> findEnv(const Key& type) const;
  // A new container record of that technology, or null when the technology is unknown.
  std::shared_ptr<MBQEnv> createEnv(const Key& type) const;

 private:
  MBQEnvFactory() = default;

  mutable std::mutex mutex_;
  std::map<Key, std::shared_ptr<MBQEnvChildFactory>> factories_;
};

}  // namespace MBQ
