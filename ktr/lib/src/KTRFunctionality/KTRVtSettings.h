#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQEID.h"
#include "MBQFunctionalityCore/MBQQoS.h"
#include "MBQFunctionalityCore/MBQVtInfo.h"
#include "MBQFunctionalityCore/MBQVtSettings.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The small records of the node's virtualization layer: its info and settings, the services a
// stopped container keeps answering for, and the client side of a connection.
//
// Element layouts are listed with each record, in writing order. Tag numbers are ids of the tag
// table; quoted names are element names. "req": the reader fails (-1) when the element is
// missing; "opt": missing is accepted; "ignored": read, result not looked at. Booleans are
// written as 0/1.

namespace KTR {

// A service that answers for a container while it is offline: its name, its port, the EID of
// the environment that serves it, and a flag.
//
// Layout: name (req), port (req), eid target EID (req), redirect_flag an empty element
// present exactly when the flag is set. The reader stops at the first missing required element
// (fields read before it keep their new values). Schema: "redirect_serviceType", types
// namespace.
class KTR_EXPORT KTRRedirectService {
 public:
  KTRRedirectService() = default;
  KTRRedirectService(const std::string& name, int port, const MBQ::MBQEID& target, bool flag = false)
      : name_(name), port_(port), target_(target), flag_(flag) {}

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  int getPort() const { return port_; }
  void setPort(int port) { port_ = port; }
  const MBQ::MBQEID& getTarget() const { return target_; }
  void setTarget(const MBQ::MBQEID& target) { target_ = target; }
  bool getFlag() const { return flag_; }
  void setFlag(bool flag) { flag_ = flag; }

  friend bool operator==(const KTRRedirectService& a, const KTRRedirectService& b) {
    return a.name_ == b.name_ && a.port_ == b.port_ && a.target_ == b.target_ && a.flag_ == b.flag_;
  }

  static const MBQ::MBQLayout<KTRRedirectService>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRRedirectService>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRRedirectService> {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "redirect_serviceType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  std::string name_;
  int port_ = 0;
  MBQ::MBQEID target_;
  bool flag_ = false;
};

// Both ends of a client connection: the client's address and port, and the server-side host
// and port.
//
// Writer: "client_ip", "client_port", host, port. Reader: host (req); port,
// "client_ip" and "client_port" ignored: a missing or malformed one leaves its field as it was.
class KTR_EXPORT KTRConnectionLinkInfo {
 public:
  KTRConnectionLinkInfo() = default;
  KTRConnectionLinkInfo(const std::string& clientIp, int clientPort, const std::string& host, int port)
      : clientIp_(clientIp), clientPort_(clientPort), host_(host), port_(port) {}

  const std::string& getClientIp() const { return clientIp_; }
  void setClientIp(const std::string& ip) { clientIp_ = ip; }
  int getClientPort() const { return clientPort_; }
  void setClientPort(int port) { clientPort_ = port; }
  const std::string& getHost() const { return host_; }
  void setHost(const std::string& host) { host_ = host; }
  int getPort() const { return port_; }
  void setPort(int port) { port_ = port; }

  friend bool operator==(const KTRConnectionLinkInfo& a, const KTRConnectionLinkInfo& b) {
    return a.clientIp_ == b.clientIp_ && a.clientPort_ == b.clientPort_ && a.host_ == b.host_ &&
           a.port_ == b.port_;
  }

  static const MBQ::MBQLayout<KTRConnectionLinkInfo>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRConnectionLinkInfo>;
  using Writer = MBQ::MBQLayoutWriter<KTRConnectionLinkInfo>;

 private:
  std::string clientIp_;
  int clientPort_ = 0;
  std::string host_;
  int port_ = 0;
};

// The node's virtualization layer as this technology describes it.
//
// Layout: release, vt_text second text, "sve_eid" (the EID of the service environment),
// vt_item one element per text of the list (opt), then MBQVtInfo's own elements in the same
// element. The reader ignores the results of its own four elements and returns the base
// reader's result. Schema: "vt_infoType", types namespace.
class KTR_EXPORT KTRVtInfo : public MBQ::MBQVtInfo {
 public:
  KTRVtInfo() = default;
  ~KTRVtInfo() override;

  const std::string& getRelease() const { return release_; }
  void setRelease(const std::string& release) { release_ = release; }
  const std::string& getVtText() const { return vtText_; }
  void setVtText(const std::string& text) { vtText_ = text; }
  const MBQ::MBQEID& getSveEID() const { return sveEid_; }
  void setSveEID(const MBQ::MBQEID& eid) { sveEid_ = eid; }
  const std::vector<std::string>& getItems() const { return items_; }
  void setItems(const std::vector<std::string>& items) { items_ = items; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRVtInfo& info) const;
  };
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "vt_infoType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRVtInfo& info) const;
  };

 private:
  std::string release_;
  std::string vtText_;
  MBQ::MBQEID sveEid_;
  std::vector<std::string> items_;
};

// The node's virtualization settings as this technology keeps them.
//
// Layout:
//   "lock_dir", "template_dir"  strings, each written only when specified; reading specifies
//                               them exactly when present;
//   item                        the settings map, one item per entry: key under name, value
//                               under value (both optional when reading); the map is cleared
//                               before reading and a missing map is accepted;
//   offline services            only when specified: an empty list as the empty element
//                               "no_offline_service", otherwise one offline_service element per service
//                               (KTRRedirectService) at this level. Reading: with the marker,
//                               specified and empty; otherwise specified exactly when the
//                               offline_service elements read;
//   "qoses"                     one qos_value element per resource (MBQ::MBQQoS), result ignored;
//   then MBQVtSettings's own elements in the same element; the reader returns the base
//   reader's result.
// Schema: "vt_settingsType", types namespace.
class KTR_EXPORT KTRVtSettings : public MBQ::MBQVtSettings {
 public:
  KTRVtSettings() = default;
  ~KTRVtSettings() override;

  const MBQ::MBQOptionalProperty<std::string>& getLockDir() const { return lockDir_; }
  void setLockDir(const MBQ::MBQOptionalProperty<std::string>& dir) { lockDir_ = dir; }
  const MBQ::MBQOptionalProperty<std::string>& getTemplateDir() const { return templateDir_; }
  void setTemplateDir(const MBQ::MBQOptionalProperty<std::string>& dir) { templateDir_ = dir; }
  const std::map<std::string, std::string>& getSettingsMap() const { return settings_; }
  void setSettingsMap(const std::map<std::string, std::string>& settings) { settings_ = settings; }
  const MBQ::MBQOptionalProperty<std::vector<KTRRedirectService>>& getOfflineServices() const {
    return offlineServices_;
  }
  void setOfflineServices(const MBQ::MBQOptionalProperty<std::vector<KTRRedirectService>>& services) {
    offlineServices_ = services;
  }
  const std::set<MBQ::MBQQoS>& getQoSes() const { return qoses_; }
  void setQoSes(const std::set<MBQ::MBQQoS>& qoses) { qoses_ = qoses; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRVtSettings& settings) const;
  };
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "vt_settingsType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRVtSettings& settings) const;
  };

 private:
  MBQ::MBQOptionalProperty<std::string> lockDir_;
  MBQ::MBQOptionalProperty<std::string> templateDir_;
  std::map<std::string, std::string> settings_;
  MBQ::MBQOptionalProperty<std::vector<KTRRedirectService>> offlineServices_;
  std::set<MBQ::MBQQoS> qoses_;
};

}  // namespace KTR
