#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQExport.h"
#include "MBQFunctionalityCore/MBQAccessProvider.h"

namespace MBQ {

// Makes service objects of interface I that work on this host.
//
// create may be called from any thread at once, and may be called again while an earlier
// call is still running.
template <class I>
class MBQ_EXPORT MBQFunctionalFactoryLocal {
 public:
  virtual ~MBQFunctionalFactoryLocal() = default;

  // A new (or shared) service object for the caller's provider, which may be null; null when
  // the object cannot be made here, and the registry then falls back to the agent.
  virtual std::shared_ptr<I> create(const MBQAccessProviderPtr& provider) const = 0;
};

// Makes service objects of interface I that forward their calls to the agent serving an
// environment, wherever it runs. Same threading rules as the local factory.
template <class I>
class MBQ_EXPORT MBQFunctionalFactoryAgent {
 public:
  virtual ~MBQFunctionalFactoryAgent() = default;

  // The proxy for `eid`, configured by `parameter` (the agent parameter registered under the
  // service's name, passed as registered). Null when it cannot be made.
  virtual std::shared_ptr<I> create(const MBQEID& eid, const MBQAccessProviderPtr& provider,
                                    const std::string& parameter) const = 0;
  // The same without a parameter: used when none is registered under the service's name.
  virtual std::shared_ptr<I> create(const MBQEID& eid, const MBQAccessProviderPtr& provider) const = 0;
};

// The registry of the service objects of one interface I, by name: local factories, agent
// factories and agent parameters, each keyed by the service name. Managers register their
// factories (usually at load); callers ask for an object with getLocal, getAgent or get.
//
// Every operation may be called from any thread. Factories are called outside the registry's
// lock, so a factory may itself use the registry, and a factory unregistered meanwhile may
// still finish a call that had already found it.
//
// No operation fails loudly: an unknown name, or a factory that makes nothing, gives a null
// pointer, and callers must test the result. Registering a null factory or a name that already
// has a factory of the same kind is a programming error and ends the process (MBQ::abort);
// replace a factory by unregistering the old one first.
template <class I>
class MBQ_EXPORT MBQFunctionalMultiplexer {
 public:
  using Interface = I;
  using InterfaceSP = std::shared_ptr<I>;
  using LocalFactory = MBQFunctionalFactoryLocal<I>;
  using AgentFactory = MBQFunctionalFactoryAgent<I>;
  using LocalFactorySP = std::shared_ptr<LocalFactory>;
  using AgentFactorySP = std::shared_ptr<AgentFactory>;

  MBQFunctionalMultiplexer() = default;
  MBQFunctionalMultiplexer(const MBQFunctionalMultiplexer&) = delete;
  MBQFunctionalMultiplexer& operator=(const MBQFunctionalMultiplexer&) = delete;

  // The product of the local factory registered under `name` for `provider`, or null when
  // there is no such factory or it makes nothing.
  InterfaceSP getLocal(const MBQAccessProviderPtr& provider, const std::string& name) const {
    LocalFactorySP factory;
    {
      std::lock_guard<std::mutex> guard(mutex_);
      auto found = localFactories_.find(name);
      if (found == localFactories_.end()) return nullptr;
      factory = found->second;
    }
    return factory->create(provider);
  }

  // The product of the agent factory registered under `name`, or null when there is no such
  // factory or it makes nothing. When `name` also has an agent parameter, the factory gets
  // it (the three-argument create); otherwise the two-argument create is used.
  InterfaceSP getAgent(const MBQEID& eid, const MBQAccessProviderPtr& provider, const std::string& name) const {
    AgentFactorySP factory;
    std::string parameter;
    bool hasParameter = false;
    {
      std::lock_guard<std::mutex> guard(mutex_);
      auto found = agentFactories_.find(name);
      if (found == agentFactories_.end()) return nullptr;
      factory = found->second;
      auto foundParameter = agentParameters_.find(name);
      if (foundParameter != agentParameters_.end()) {
        parameter = foundParameter->second;
        hasParameter = true;
      }
    }
    return hasParameter ? factory->create(eid, provider, parameter) : factory->create(eid, provider);
  }

  // The service object for `eid`: the local one when `eid` may be served here, else (or when
  // the local path gives nothing) the agent's.
  //  - With a provider whose checker says `eid` is not local, the local factory is never
  //    asked: the result is getAgent(eid, provider, name).
  //  - Otherwise (no provider, a provider without checker, or a local `eid`) the result is
  //    getLocal(provider, name) when that is not null, else getAgent(eid, provider, name).
  InterfaceSP get(const MBQEID& eid, const MBQAccessProviderPtr& provider, const std::string& name) const {
    bool mayBeLocal = true;
    if (provider) {
      MBQLocalityCheckerPtr checker = provider->getLocalityChecker();
      if (checker && !checker->isLocal(eid)) mayBeLocal = false;
    }
    if (mayBeLocal) {
      InterfaceSP local = getLocal(provider, name);
      if (local) return local;
    }
    return getAgent(eid, provider, name);
  }

  // Adds the local factory of `name`. A null factory or a name that already has a local
  // factory ends the process.
  void registerLocal(const std::string& name, LocalFactorySP factory) {
    if (!factory) misuse(__LINE__, "registerLocal");
    std::lock_guard<std::mutex> guard(mutex_);
    if (!localFactories_.emplace(name, std::move(factory)).second) {
      misuse(__LINE__, "registerLocal");
    }
  }
  // Removes the local factory of `name`; an unknown name is ignored.
  void unregisterLocal(const std::string& name) {
    std::lock_guard<std::mutex> guard(mutex_);
    localFactories_.erase(name);
  }

  // Adds the agent factory of `name`. A null factory or a name that already has an agent
  // factory ends the process.
  void registerAgent(const std::string& name, AgentFactorySP factory) {
    if (!factory) misuse(__LINE__, "registerAgent");
    std::lock_guard<std::mutex> guard(mutex_);
    if (!agentFactories_.emplace(name, std::move(factory)).second) {
      misuse(__LINE__, "registerAgent");
    }
  }
  // Removes the agent factory of `name`, keeping its parameter; an unknown name is ignored.
  void unregisterAgent(const std::string& name) {
    std::lock_guard<std::mutex> guard(mutex_);
    agentFactories_.erase(name);
  }

  // Sets the agent parameter of `name`, replacing an earlier one. A parameter is kept apart
  // from the factory: it may be set before the factory is registered and outlives its
  // unregistration. An empty parameter is still a parameter (the three-argument create).
  void setAgentParameter(const std::string& name, const std::string& parameter) {
    std::lock_guard<std::mutex> guard(mutex_);
    agentParameters_[name] = parameter;
  }
  // Removes the agent parameter of `name`; an unknown name is ignored.
  void removeAgentParameter(const std::string& name) {
    std::lock_guard<std::mutex> guard(mutex_);
    agentParameters_.erase(name);
  }

 private:
  [[noreturn]] static void misuse(int line, const char* function) {
    MBQ::abort("MBQFunctionalityCore", "core/src/MBQFunctionalityCore/MBQFunctionalFactory", line, function);
  }

  mutable std::mutex mutex_;
  std::map<std::string, LocalFactorySP> localFactories_;
  std::map<std::string, AgentFactorySP> agentFactories_;
  std::map<std::string, std::string> agentParameters_;
};

}  // namespace MBQ
