#pragma once

// A generated node: 1,000 container files of about 70 lines each (resources, NETIF, DISK,
// comments and keys the library does not know), every address, MAC, UUID and disk of its own,
// written to a temporary folder that is removed with the corpus.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace bench {

constexpr int kNodeFiles = 1000;

inline std::string containerFile(int n) {
  // Values that satisfy the default vocabulary's formulas, as a node's containers would.
  static const char* const kResources =
      "KERNELMEM=\"12582912:13631488\"\nDIRCACHE=\"2621440:2883584\"\nPRIVMEM=\"131072:139264\"\n"
      "RESIDENTMEM=\"0:9223372036854775807\"\nSWAPMEM=\"0:65536\"\nSHAREDMEM=\"32768:32768\"\n"
      "LOCKEDMEM=\"512:512\"\nGUARMEM=\"65536:9223372036854775807\"\nOOMSAFEMEM=\"49152:9223372036854775807\"\n"
      "NUMPROC=\"256:256\"\nOPENFILES=\"8192:8192\"\nFILELOCKS=\"256:288\"\nTERMINALS=\"32:32\"\n"
      "PENDINGSIGNALS=\"512:512\"\nFWRULES=\"200:200\"\nTCPSOCKETS=\"320:320\"\nOTHERSOCKETS=\"320:320\"\n"
      "TCPSENDBUF=\"1572864:2424832\"\nTCPRECVBUF=\"1572864:2424832\"\nOTHERBUF=\"1048576:1900544\"\n"
      "DGRAMRECVBUF=\"196608:196608\"\nDISKBLOCKS=\"4194304:4718592\"\nINODES=\"262144:294912\"\n";
  char uuid[40];
  std::snprintf(uuid, sizeof uuid, "00000000-0000-4000-8000-%012d", n);
  std::ostringstream text;
  text << "# Configuration of container " << n << "\n\nONBOOT=\"yes\"\nDISABLED=\"no\"\n\n# Resources\n";
  text << kResources << "AVNUMPROC=\"" << 150 + n % 50 << "\"\nSLMMEMORYLIMIT=\"536870912\"\nCPUWEIGHT=\"500\"\n"
       << "CPULIMIT=\"25.5\"\nCPUS=\"2\"\nIOPRIO=\"4\"\nQUOTAIDS=\"0\"\n\n"
       << "VE_ROOT=\"/var/lib/quellix/root/$VEID\"\nVE_PRIVATE=\"/var/lib/quellix/private/$VEID\"\n"
       << "OSTEMPLATE=\"debian-12-minimal\"\nORIGIN_SAMPLE=\"web-small\"\n"
       << "HOSTNAME=\"ct" << n << ".example.com\"\nNAME=\"ct" << n << "\"\n"
       << "DESCRIPTION=\"generated container " << n << "\"\n"
       << "IP_ADDRESS=\"10.1." << n / 250 << "." << n % 250 + 1 << "/16\"\n"
       << "NAMESERVER=\"10.0.0.1 10.0.0.2\"\nSEARCHDOMAIN=\"example.com\"\nARCH=\"x86_64\"\n"
       << "FEATURES=\"fuse:on ipv6:off\"\nIPTABLES=\"iptable_filter iptable_mangle ipt_REJECT\"\n"
       << "NETIF=\"ifname=eth0,network=,mac=02:00:00:00:" << std::hex << n / 256 << ":" << n % 256 << std::dec
       << ",nettype=bridged,gw=192.168.0.1,ip=192.168." << n / 250 << "." << n % 250 + 1 << "/16,dhcp=no\"\n"
       << "DISK=\"image=/var/lib/quellix/private/" << n << "/disk.img,size=10485760,uuid={" << uuid << "}\"\n"
       << "UUID=\"" << uuid << "\"\n";
  for (int i = 0; i < 6; ++i) text << "# operator note " << i << "\nLOCAL_" << i << "=\"kept\"\n";
  return text.str();
}

class NodeCorpus {
 public:
  NodeCorpus() {
    char pattern[] = "/tmp/ktrnode.XXXXXX";
    if (::mkdtemp(pattern) == nullptr) std::abort();
    dir_ = pattern;
    for (int n = 0; n < kNodeFiles; ++n) {
      paths_.push_back(dir_ + "/" + std::to_string(100 + n) + ".conf");
      const std::string text = containerFile(n);
      std::ofstream(paths_.back()) << text;
      bytes_ += text.size();
    }
  }
  ~NodeCorpus() { std::system(("rm -rf " + dir_).c_str()); }
  NodeCorpus(const NodeCorpus&) = delete;
  NodeCorpus& operator=(const NodeCorpus&) = delete;

  const std::string& dir() const { return dir_; }
  const std::vector<std::string>& paths() const { return paths_; }
  double bytes() const { return static_cast<double>(bytes_); }

 private:
  std::string dir_;
  std::vector<std::string> paths_;
  std::size_t bytes_ = 0;
};

}  // namespace bench
