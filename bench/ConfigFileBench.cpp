// Editing container files as `ktrctl set` does: read a file, parse it into a configuration,
// change one value and merge-write it back through a temporary file and rename. The baseline
// does the least any editor must: split the lines, find each value's span, replace one value
// and write the file through the same temporary-file-and-rename path. The kernel's file work
// is in both; the difference is the record, the parsers and the merge.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "MBQFunctionalityCore/MBQBashStr.h"

namespace {

constexpr int kFiles = 1000;

const char* const kResources[] = {
    "KERNELMEM", "DIRCACHE", "PRIVMEM", "RESIDENTMEM", "SWAPMEM", "SHAREDMEM", "LOCKEDMEM",
    "GUARMEM", "OOMSAFEMEM", "NUMPROC", "OPENFILES", "FILELOCKS", "TERMINALS", "PENDINGSIGNALS",
    "FWRULES", "TCPSOCKETS", "OTHERSOCKETS", "TCPSENDBUF", "TCPRECVBUF", "OTHERBUF", "DGRAMRECVBUF",
    "DISKBLOCKS", "INODES"};

std::string makeFile(int n) {
  std::ostringstream text;
  text << "# Configuration of container " << n << "\n\nONBOOT=\"yes\"\nDISABLED=\"no\"\n\n# Resources\n";
  for (const char* key : kResources) text << key << "=\"" << 1000 + n << ":" << 2000 + n << "\"\n";
  text << "AVNUMPROC=\"" << 100 + n % 50 << "\"\nSLMMEMORYLIMIT=\"536870912\"\nCPUWEIGHT=\"500\"\n"
       << "CPULIMIT=\"25.5\"\nCPUS=\"2\"\nIOPRIO=\"4\"\nQUOTAIDS=\"0\"\n\n"
       << "VE_ROOT=\"/var/lib/quellix/root/$VEID\"\nVE_PRIVATE=\"/var/lib/quellix/private/$VEID\"\n"
       << "OSTEMPLATE=\"debian-12-minimal\"\nORIGIN_SAMPLE=\"web-small\"\n"
       << "HOSTNAME=\"ct" << n << ".example.com\"\nNAME=\"ct" << n << "\"\n"
       << "DESCRIPTION=\"generated container " << n << "\"\n"
       << "IP_ADDRESS=\"10.1." << n / 250 << "." << n % 250 << "/24\"\n"
       << "NAMESERVER=\"10.0.0.1 10.0.0.2\"\nSEARCHDOMAIN=\"example.com\"\nARCH=\"x86_64\"\n"
       << "FEATURES=\"fuse:on ipv6:off\"\nIPTABLES=\"iptable_filter iptable_mangle ipt_REJECT\"\n"
       << "NETIF=\"ifname=eth0,network=,mac=02:00:00:00:" << n % 90 + 10
       << ":01,nettype=bridged,gw=192.168.10.1,ip=192.168.10." << n % 250 << "/24,dhcp=no\"\n"
       << "DISK=\"image=/var/lib/quellix/private/" << n << "/disk.img,size=10485760,uuid={6a1f6f0e-8c2b-4d4e-9a43-0e5b2f3c9d11}\"\n"
       << "UUID=\"c5b6b5a2-0f0c-4bd8-9f5e-4a1d2e3f4a5b\"\n";
  for (int i = 0; i < 6; ++i) text << "# operator note " << i << "\nLOCAL_" << i << "=\"kept\"\n";
  return text.str();
}

class Corpus {
 public:
  Corpus() {
    char pattern[] = "/tmp/ktrbench.XXXXXX";
    if (::mkdtemp(pattern) == nullptr) std::abort();
    dir_ = pattern;
    for (int n = 0; n < kFiles; ++n) {
      paths_.push_back(dir_ + "/" + std::to_string(100 + n) + ".conf");
      std::ofstream(paths_.back()) << makeFile(n);
      bytes_ += makeFile(n).size();
    }
  }
  ~Corpus() { std::system(("rm -rf " + dir_).c_str()); }
  const std::vector<std::string>& paths() const { return paths_; }
  double bytes() const { return static_cast<double>(bytes_); }

 private:
  std::string dir_;
  std::vector<std::string> paths_;
  std::size_t bytes_ = 0;
};

void BM_ReadAndMergeWrite(benchmark::State& state) {
  Corpus corpus;
  auto parser = KTR::KTREnvConfigBashParser::getInstance(KTR::defaultVocabulary());
  long long round = 0;
  for (auto _ : state) {
    ++round;
    for (const auto& path : corpus.paths()) {
      std::string text;
      KTR::readConfigFile(path, text);
      std::istringstream in(text);
      KTR::KTREnvConfig config;
      parser->getConfig(in, config);
      KTR::KTREnvConfigBashParser::ParameterParserPut put(config, parser->getQoSMap());
      const std::string value = std::to_string(200 + round % 50) + ":" + std::to_string(300 + round % 50);
      put.put("numproc", value.c_str());
      config.setQoSes(put.collected());
      std::istringstream old(text);
      std::ostringstream out;
      parser->putConfig(config, out, &old, true);
      KTR::replaceConfigFile(path, out.str());
    }
  }
  state.SetItemsProcessed(state.iterations() * kFiles);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * corpus.bytes()));
}
BENCHMARK(BM_ReadAndMergeWrite)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_BaselineSpanReplace(benchmark::State& state) {
  Corpus corpus;
  long long round = 0;
  for (auto _ : state) {
    ++round;
    for (const auto& path : corpus.paths()) {
      std::string text;
      KTR::readConfigFile(path, text);
      std::string out;
      out.reserve(text.size() + 16);
      std::string::size_type start = 0;
      std::vector<char> line;
      while (start < text.size()) {
        std::string::size_type end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        line.assign(text.begin() + start, text.begin() + end);
        line.push_back('\0');
        char* name = nullptr;
        char* value = nullptr;
        unsigned long begin = 0, last = 0;
        std::string original(text, start, end - start);
        if (MBQ::parseBashStr(line.data(), &name, &value, &begin, &last) == 0 && std::strcmp(name, "NUMPROC") == 0)
          original.replace(begin, last - begin + 1,
                           "\"" + std::to_string(200 + round % 50) + ":" + std::to_string(300 + round % 50) + "\"");
        out += original;
        out += '\n';
        start = end + 1;
      }
      KTR::replaceConfigFile(path, out);
    }
  }
  state.SetItemsProcessed(state.iterations() * kFiles);
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * corpus.bytes()));
}
BENCHMARK(BM_BaselineSpanReplace)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
