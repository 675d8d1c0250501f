#include "MBQFunctionalityCore/MBQEnv.h"

#include <functional>
#include <typeinfo>
#include <vector>

#include "MBQCore/MBQError.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQDerivedParsers.h"

namespace MBQ {

namespace {

bool isAlertReason(int reason) { return reason >= 0 && reason < MBQEnv::kAlertReasons; }

struct AlertItem {
  int reason = 0;
  int value = 0;
};

// The virtual configuration goes through the derived writer so its element names its class.
// A class that no factory knows (the plain MBQVEnvConfig of a record built without a
// technology library) is written with the base writer instead of failing the whole record.
int writeVirtualConfig(MBQMessageIterator& it, const MBQVEnvConfig& config) {
  if (MBQDerivedParserFactory<MBQEnvConfig>::findByType(typeid(config)) != nullptr)
    return MBQWriterDerived<MBQEnvConfig>()(it, config);
  return putObjectInternal(it, config, MBQVEnvConfig::Writer());
}

// The counterpart: a factory chosen by schema type when one knows it, else a plain
// MBQVEnvConfig, so a record written by a technology this process has not loaded still reads.
int readVirtualConfig(const MBQMessageIterator& it, std::shared_ptr<MBQVEnvConfig>& out) {
  std::string schemaName;
  const bool known = it.getSchemaType(schemaName) == 0 &&
                     MBQDerivedParserFactory<MBQEnvConfig>::findByName(schemaName) != nullptr;
  if (!known) {
    auto plain = std::make_shared<MBQVEnvConfig>();
    if (MBQEnvConfig::Reader()(it, *plain) != 0) return -1;
    out = plain;
    return 0;
  }
  std::shared_ptr<MBQEnvConfig> config;
  if (MBQReaderDerivedValid<MBQEnvConfig>(false)(it, config) != 0) return -1;
  auto virtualConfig = std::dynamic_pointer_cast<MBQVEnvConfig>(config);
  if (!virtualConfig) {
    setErrorMessage("virtual_config of schema type '%s' is no virtual configuration", schemaName.c_str());
    return -1;
  }
  out = virtualConfig;
  return 0;
}

}  // namespace

int MBQEnvStatus::Reader::operator()(const MBQMessageIterator& it, MBQEnvStatus& status) const {
  MBQEnvStatus read;
  if (it.getValue("state", read.state_) != 0) return -1;
  if (it.hasChild("since") && it.getValue("since", read.since_) != 0) return -1;
  status = read;
  return 0;
}

int MBQEnvStatus::Writer::operator()(MBQMessageIterator& it, const MBQEnvStatus& status) const {
  if (it.setValue("state", status.state_) != 0) return -1;
  if (status.since_ != 0 && it.setValue("since", status.since_) != 0) return -1;
  return 0;
}

MBQEnv::MBQEnv() = default;

MBQEnv::MBQEnv(const MBQEID& eid, const std::shared_ptr<MBQVEnvConfig>& virtualConfig)
    : eid_(eid), virtualConfig_(virtualConfig) {}

MBQEnv::~MBQEnv() = default;

int MBQEnv::getAlertType(int reason) const { return isAlertReason(reason) ? alertTypes_[reason] : 0; }

void MBQEnv::setAlertType(int reason, int value) {
  if (isAlertReason(reason)) alertTypes_[reason] = value;
}

std::shared_ptr<MBQVEnvConfig> MBQEnv::getVirtualConfig() { return virtualConfig_; }

std::shared_ptr<const MBQVEnvConfig> MBQEnv::getVirtualConfig() const { return virtualConfig_; }

std::size_t MBQEnv::getSortKey() const {
  return eid_.isValid() ? std::hash<std::string>()(eid_.toString()) : 0;
}

std::string MBQEnv::getTitle() const { return eid_.toString(); }

int MBQEnv::Reader::operator()(const MBQMessageIterator& it, MBQEnv& env) const {
  // Everything is read into locals first, so a failing element leaves the record as it was.
  MBQEID eid;
  if (MBQReaderID(MBQDefaultReader<MBQEID>(), "eid")(it, eid) != 0) {
    setErrorMessage("container record without eid");
    return -1;
  }
  MBQEID parent;
  if (it.hasChild("parent_eid") && it.getObj(parent, "parent_eid") != 0) return -1;
  MBQEnvStatus status;
  if (it.hasChild("status") && MBQReaderID(MBQEnvStatus::Reader(), "status")(it, status) != 0) return -1;

  std::vector<AlertItem> alerts;
  auto alertReader = [](const MBQMessageIterator& item, AlertItem& alert) {
    return item.getValue("reason", alert.reason) || item.getValue("value", alert.value) ? -1 : 0;
  };
  if (MBQReaderList(alertReader, "alert", MBQReaderOptional)(it, alerts) != 0) return -1;

  std::shared_ptr<MBQEnvConfig> config = env.config_;
  if (it.hasChild("config")) {
    config = std::make_shared<MBQEnvConfig>();
    if (MBQReaderID(MBQEnvConfig::Reader(), "config")(it, *config) != 0) return -1;
  }
  std::shared_ptr<MBQVEnvConfig> virtualConfig = env.virtualConfig_;
  if (it.hasChild("virtual_config") && MBQReaderID(&readVirtualConfig, "virtual_config")(it, virtualConfig) != 0)
    return -1;

  env.eid_ = eid;
  env.parentEid_ = parent;
  env.status_ = status;
  for (int& type : env.alertTypes_) type = 0;
  for (const AlertItem& alert : alerts) env.setAlertType(alert.reason, alert.value);
  env.config_ = config;
  env.virtualConfig_ = virtualConfig;
  return 0;
}

int MBQEnv::Writer::operator()(MBQMessageIterator& it, const MBQEnv& env) const {
  if (it.putObj(env.eid_, "eid") != 0) return -1;
  if (env.parentEid_.isValid() && it.putObj(env.parentEid_, "parent_eid") != 0) return -1;
  if (it.putObject(env.status_, MBQEnvStatus::Writer(), "status") != 0) return -1;
  for (int reason = 0; reason < kAlertReasons; ++reason) {
    if (env.alertTypes_[reason] == 0) continue;
    if (it.addChildAndDescend("alert") != 0) return -1;
    const int rc = it.setValue("reason", reason) || it.setValue("value", env.alertTypes_[reason]) ? -1 : 0;
    it.up();
    if (rc != 0) return -1;
  }
  if (env.config_ && it.putObject(*env.config_, MBQEnvConfig::Writer(), "config") != 0) return -1;
  if (env.virtualConfig_ && MBQWriterID(&writeVirtualConfig, "virtual_config")(it, *env.virtualConfig_) != 0)
    return -1;
  return 0;
}

}  // namespace MBQ
