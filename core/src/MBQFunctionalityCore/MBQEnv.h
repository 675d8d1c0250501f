#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

class MBQEnvConfig;
class MBQVEnvConfig;

// A container's run state as the agent last saw it: the state code (the agent's own numbering;
// 0 is "unknown") and the time it entered that state, in seconds since the epoch (0: not known).
//
// Message layout, in the record's own element: "state" (integer, required) then "since"
// (integer, written only when not 0; missing reads as 0).
class MBQ_EXPORT MBQEnvStatus {
 public:
  MBQEnvStatus() = default;
  explicit MBQEnvStatus(int state, long long since = 0) : state_(state), since_(since) {}

  int getState() const { return state_; }
  void setState(int state) { state_ = state; }
  long long getSince() const { return since_; }
  void setSince(long long since) { since_ = since; }

  friend bool operator==(const MBQEnvStatus& a, const MBQEnvStatus& b) {
    return a.state_ == b.state_ && a.since_ == b.since_;
  }
  friend bool operator!=(const MBQEnvStatus& a, const MBQEnvStatus& b) { return !(a == b); }

  // The reader returns -1 when "state" is missing or either number does not convert, leaving
  // the record unchanged.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQEnvStatus& status) const;
  };
  struct MBQ_EXPORT Writer {
    int operator()(MBQMessageIterator& it, const MBQEnvStatus& status) const;
  };

 private:
  int state_ = 0;
  long long since_ = 0;
};

// A deleter that deletes nothing: a shared pointer built with it only views an object whose
// lifetime somebody else manages (the owner must outlive every such pointer).
struct MBQ_EXPORT deleter_fake {
  template <class T>
  void operator()(T*) const {}
};

// One container (environment) as the agent lists it: its EID, the EID of its parent (the node
// or service that hosts it), its status, five alert types and two configurations.
//
// The plain configuration (getConfig) holds the generic properties; the virtual configuration
// (getVirtualConfig) is the container technology's own record, a class derived from
// MBQVEnvConfig that technology libraries register. Either may be null. Copies share both
// configurations (the pointers are copied, not the records).
//
// Technology libraries derive their container record from this class and override the title
// and the sort key. Not thread-safe: one thread uses a record at a time.
class MBQ_EXPORT MBQEnv {
 public:
  static constexpr int kAlertReasons = 5;

  MBQEnv();
  MBQEnv(const MBQEID& eid, const std::shared_ptr<MBQVEnvConfig>& virtualConfig);
  virtual ~MBQEnv();

  const MBQEID& getEID() const { return eid_; }
  void setEID(const MBQEID& eid) { eid_ = eid; }
  const MBQEID& getParentEID() const { return parentEid_; }
  void setParentEID(const MBQEID& parent) { parentEid_ = parent; }
  const MBQEnvStatus& getStatus() const { return status_; }
  void setStatus(const MBQEnvStatus& status) { status_ = status; }

  // The alert type recorded for an alert reason 0..4 (0: no alert). A reason outside that range
  // reads as 0 and is ignored when set.
  int getAlertType(int reason) const;
  void setAlertType(int reason, int value);

  // The plain configuration. Deliberately not virtual: technologies only add to the virtual one.
  const std::shared_ptr<MBQEnvConfig>& getConfig() { return config_; }
  std::shared_ptr<const MBQEnvConfig> getConfig() const { return config_; }
  void setConfig(const std::shared_ptr<MBQEnvConfig>& config) { config_ = config; }

  // The technology's configuration (a KTR::KTREnvConfig for "quellix" containers), or null.
  virtual std::shared_ptr<MBQVEnvConfig> getVirtualConfig();
  virtual std::shared_ptr<const MBQVEnvConfig> getVirtualConfig() const;
  void setVirtualConfig(const std::shared_ptr<MBQVEnvConfig>& config) { virtualConfig_ = config; }

  // The key lists sort containers by. Here: the hash of the EID text (std::hash), or 0 for an
  // empty EID; so keys are stable within one process only. Technologies give a better key.
  virtual std::size_t getSortKey() const;
  // The text that names the container to a person. Here: the EID text.
  virtual std::string getTitle() const;

  // Message layout, in the record's own element (children by name):
  //   "eid"            the EID (required when reading);
  //   "parent_eid"     the parent's EID, only when it is not empty;
  //   "status"         the status record;
  //   "alert"          one per reason with a non-zero alert type: children "reason", "value";
  //   "config"         the plain configuration, only when there is one (typed kCoreTypesNamespaceId:120);
  //   "virtual_config" the virtual configuration, only when there is one, written through the
  //                    derived writer of MBQEnvConfig so that its schema type names its class.
  // The reader returns -1 when "eid" is missing or any element present does not read; it
  // replaces the configurations only when their elements exist. A "virtual_config" whose
  // schema type no factory knows reads as a plain MBQVEnvConfig; one that a factory reads into
  // a class that is no MBQVEnvConfig fails. Writer schema: core namespace (kCoreTypesNamespaceId), type 122.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQEnv& env) const;
  };
  struct MBQ_EXPORT Writer {
    const char* getStrNSID() const { return ""; }
    const char* getStrTypeID() const { return ""; }
    int getNSID() const { return kCoreTypesNamespaceId; }
    int getTypeID() const { return 122; }
    int operator()(MBQMessageIterator& it, const MBQEnv& env) const;
  };

 private:
  MBQEID eid_;
  MBQEID parentEid_;
  MBQEnvStatus status_;
  int alertTypes_[kAlertReasons] = {};
  std::shared_ptr<MBQEnvConfig> config_;
  std::shared_ptr<MBQVEnvConfig> virtualConfig_;
};

}  // namespace MBQ
