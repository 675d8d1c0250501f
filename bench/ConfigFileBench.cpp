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
#include "NodeCorpus.h"

namespace {

constexpr int kFiles = bench::kNodeFiles;
using Corpus = bench::NodeCorpus;

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
