#include "ktrctlContainerReport.h"

#include <memory>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRHardDisk.h"
#include "KTRFunctionality/KTRVEth.h"
#include "MBQCore/MBQString.h"
#include "ktrctlValidate.h"

namespace ktrctl {

namespace {

// The image files of a container's disks.
class DiskImages : public KTR::HardDisk::List::Visitor {
 public:
  explicit DiskImages(std::vector<Identity>& out) : out_(out) {}
  int visit(KTR::HardDisk::List::HqFS&) override { return 0; }
  int visit(KTR::HardDisk::List::Images<KTR::HardDisk::Dromo>& list) override {
    for (const KTR::HardDisk::Dromo& disk : list.disks())
      if (!disk.image().empty()) out_.push_back({"disk image", disk.image(), "disk"});
    return 0;
  }
  int visit(KTR::HardDisk::List::Images<KTR::HardDisk::Loopback>&) override { return 0; }

 private:
  std::vector<Identity>& out_;
};

void addAddress(const MBQ::MBQIPAddress& address, const std::string& key, std::vector<Identity>& out) {
  out.push_back({address.isV6() ? "IPv6 address" : "IPv4 address", address.toString(), key});
}

void collectIdentities(const KTR::KTREnvConfig& config, const std::string& id, std::vector<Identity>& out) {
  MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>> addresses;
  if (config.getAddresses(addresses) == 0 && addresses.isSpecified())
    for (const MBQ::MBQIPAddress& address : addresses.get()) addAddress(address, "ip_address", out);
  MBQ::MBQOptionalProperty<std::vector<KTR::KTRNetVEth>> veths;
  if (config.getNetVEths(veths) == 0 && veths.isSpecified()) {
    for (const KTR::KTRNetVEth& veth : veths.get()) {
      // The host-routed device carries IP_ADDRESS's addresses, already counted.
      if (veth.isHostRouted()) continue;
      for (const MBQ::MBQIPAddress& address : veth.getAddresses()) addAddress(address, "netif", out);
      if (!veth.getMac().empty()) out.push_back({"MAC address", MBQ::toLower(veth.getMac()), "netif"});
    }
  }
  MBQ::MBQOptionalProperty<std::string> text;
  if (config.getUUID(text) == 0 && text.isSpecified() && !text.get().empty()) {
    std::string uuid = MBQ::toLower(text.get());
    if (uuid.size() > 2 && uuid.front() == '{' && uuid.back() == '}') uuid = uuid.substr(1, uuid.size() - 2);
    out.push_back({"UUID", uuid, "uuid"});
  }
  if (config.getHostname(text) == 0 && text.isSpecified() && !text.get().empty())
    out.push_back({"hostname", MBQ::toLower(text.get()), "hostname"});
  if (config.getVEPrivateVar(text) == 0 && text.isSpecified() && !text.get().empty()) {
    std::string path = text.get();
    for (std::string::size_type at; (at = path.find("$VEID")) != std::string::npos;) path.replace(at, 5, id);
    out.push_back({"private area", path, "ve_private"});
  }
  std::shared_ptr<KTR::HardDisk::List::Base> disks;
  if (config.getHardDisks(disks) == 0 && disks) {
    DiskImages images(out);
    disks->accept(images);
  }
}

}  // namespace

int inspectContainer(Session& session, const std::string& path, const std::string& id, const std::string& text,
                     FileReport& report) {
  ErrorCapture capture;
  KTR::KTREnvConfig config;
  if (readContainer(session, path, text, {}, config) != kOk) {
    report.validationError = capture.message();
    return kError;
  }
  collectIdentities(config, id, report.identities);
  report.misread = misreadings(session, config, text);
  report.validation = validateConfig(session, path, config, report.violations);
  if (report.validation == kError) report.validationError = capture.message();
  return kOk;
}

}  // namespace ktrctl
