#pragma once

#include <memory>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQEID.h"

// The manager interfaces that KTRLibFunctionality hands out. Each has a local implementation,
// working on this host, and an agent implementation forwarding to the agent of the node that
// serves the EID; callers cannot tell them apart.
//
// Common rules for every operation below: it returns 0, or -1 with a message in the error
// text (MBQ::getErrorMessage); on failure its output arguments are left as they were. An
// operation may block (the agent form talks to another node). Objects are not shared between
// threads unless an implementation says so.

namespace KTR {

class KTREnvConfig;
class KTRNetConfiguration;
class KTRPackageHQTemplate;
class KTRPackageInfo;
class KTRProblemReportData;
class KTRTemplateConfigInfo;
class KTRUpdate;
class KTRUpdateConfig;

// Template manager: the OS and application templates kept in the node's template area.
class KTR_EXPORT KTRTEM {
 public:
  virtual ~KTRTEM();
  // Replaces `templates` with the templates the node holds.
  virtual int listTemplates(std::vector<std::shared_ptr<KTRPackageHQTemplate>>& templates) = 0;
  // The full description of the template `name`; -1 when the node has no such template.
  virtual int getTemplateConfigInfo(const std::string& name, std::shared_ptr<KTRTemplateConfigInfo>& info) = 0;
};

// Environment manager: the containers of the node and their configurations.
class KTR_EXPORT KTREnvM {
 public:
  virtual ~KTREnvM();
  // Replaces `eids` with the EIDs of the containers on the node.
  virtual int listEnvs(std::vector<MBQ::MBQEID>& eids) = 0;
  // The configuration of container `eid`, as a new record; -1 for an unknown container.
  virtual int getEnvConfig(const MBQ::MBQEID& eid, std::shared_ptr<KTREnvConfig>& config) = 0;
  // Applies the specified properties of `config` to container `eid`; unspecified ones keep
  // their values.
  virtual int setEnvConfig(const MBQ::MBQEID& eid, const KTREnvConfig& config) = 0;
};

// Package manager: the application packages installed in a container.
class KTR_EXPORT KTRPkgM {
 public:
  virtual ~KTRPkgM();
  // Replaces `packages` with the packages installed in container `eid`.
  virtual int listPackages(const MBQ::MBQEID& eid, std::vector<std::shared_ptr<KTRPackageInfo>>& packages) = 0;
  // Installs, or removes, the named packages in container `eid`; all or none.
  virtual int installPackages(const MBQ::MBQEID& eid, const std::vector<std::string>& names) = 0;
  virtual int removePackages(const MBQ::MBQEID& eid, const std::vector<std::string>& names) = 0;
};

// Network manager: the node's traffic shaping configuration.
class KTR_EXPORT KTRNetworkM {
 public:
  virtual ~KTRNetworkM();
  // The node's shaping configuration, as a new record.
  virtual int getNetConfiguration(std::shared_ptr<KTRNetConfiguration>& configuration) = 0;
  // Replaces the node's shaping configuration as a whole.
  virtual int setNetConfiguration(const KTRNetConfiguration& configuration) = 0;
};

// Process monitor: what runs inside a container, read only.
class KTR_EXPORT KTRProcessMonitor {
 public:
  virtual ~KTRProcessMonitor();
  // Replaces `pids` with the ids, as seen from the node, of the processes of container `eid`.
  virtual int listProcesses(const MBQ::MBQEID& eid, std::vector<int>& pids) = 0;
  // Sets `alive` to whether process `pid` of container `eid` still runs.
  virtual int isProcessAlive(const MBQ::MBQEID& eid, int pid, bool& alive) = 0;
};

// Process manager: starts and stops processes inside a container.
class KTR_EXPORT KTRProcessM {
 public:
  virtual ~KTRProcessM();
  // Starts `argv` (program first) in container `eid` and sets `pid` to its id as seen from
  // the node.
  virtual int startProcess(const MBQ::MBQEID& eid, const std::vector<std::string>& argv, int& pid) = 0;
  // Sends `signal` to process `pid` of container `eid`.
  virtual int killProcess(const MBQ::MBQEID& eid, int pid, int signal) = 0;
};

// Update service: its configuration and the updates it knows of.
class KTR_EXPORT KTRUp2date {
 public:
  virtual ~KTRUp2date();
  // The update service's configuration, as a new record.
  virtual int getUpdateConfig(std::shared_ptr<KTRUpdateConfig>& config) = 0;
  // Replaces the update service's configuration as a whole.
  virtual int setUpdateConfig(const KTRUpdateConfig& config) = 0;
  // Replaces `updates` with the available and installed updates, each of its own kind.
  virtual int listUpdates(std::vector<std::shared_ptr<KTRUpdate>>& updates) = 0;
};

// Support service: collects problem reports and passes them on to support.
class KTR_EXPORT KTRSupport {
 public:
  virtual ~KTRSupport();
  // Sends `report`; 0 once support has accepted it.
  virtual int sendProblemReport(const KTRProblemReportData& report) = 0;
};

// Sample manager: the named configuration samples that new containers are created from.
class KTR_EXPORT KTRSampleM {
 public:
  virtual ~KTRSampleM();
  // Replaces `names` with the names of the node's samples, sorted.
  virtual int listSamples(std::vector<std::string>& names) = 0;
  // The sample `name` as a configuration record; -1 when the node has no such sample.
  virtual int getSample(const std::string& name, std::shared_ptr<KTREnvConfig>& config) = 0;
};

using KTRTEMSP = std::shared_ptr<KTRTEM>;
using KTREnvMSP = std::shared_ptr<KTREnvM>;
using KTRPkgMSP = std::shared_ptr<KTRPkgM>;
using KTRNetworkMSP = std::shared_ptr<KTRNetworkM>;
using KTRProcessMonitorSP = std::shared_ptr<KTRProcessMonitor>;
using KTRProcessMSP = std::shared_ptr<KTRProcessM>;
using KTRUp2dateSP = std::shared_ptr<KTRUp2date>;
using KTRSupportSP = std::shared_ptr<KTRSupport>;
using KTRSampleMSP = std::shared_ptr<KTRSampleM>;

}  // namespace KTR
