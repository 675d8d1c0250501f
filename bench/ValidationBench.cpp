// Resource validation of one container against the default vocabulary (30 resources, 25
// formulas, two of them over every resource). validateQoSes builds its checker on every call,
// which loads the index and parses every formula; checkParameters alone is the cost of the
// evaluation on a checker that is already initialised.
#include <benchmark/benchmark.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvSampleM.h"
#include "KTRFunctionality/KTRQoSTune.h"
#include "KTRFunctionality/KTRVocabulary.h"

namespace {

constexpr long long kUnlimited = 9223372036854775807LL;

// The resources of examples/containers/101.conf, which pass every default formula.
std::set<MBQ::MBQQoS> passingValues() {
  return {MBQ::MBQQoS("kernelmem", 12582912, 13631488), MBQ::MBQQoS("dircache", 2621440, 2883584),
          MBQ::MBQQoS("privmem", 131072, 139264),        MBQ::MBQQoS("residentmem", 0, kUnlimited),
          MBQ::MBQQoS("swapmem", 0, 65536),              MBQ::MBQQoS("sharedmem", 32768, 32768),
          MBQ::MBQQoS("lockedmem", 512, 512),            MBQ::MBQQoS("guarmem", 65536, kUnlimited),
          MBQ::MBQQoS("oomsafemem", 49152, kUnlimited),  MBQ::MBQQoS("slmmemorylimit", 536870912),
          MBQ::MBQQoS("numproc", 256, 256),              MBQ::MBQQoS("avnumproc", 192),
          MBQ::MBQQoS("openfiles", 8192, 8192),          MBQ::MBQQoS("filelocks", 256, 288),
          MBQ::MBQQoS("terminals", 32, 32),              MBQ::MBQQoS("pendingsignals", 512, 512),
          MBQ::MBQQoS("fwrules", 200, 200),              MBQ::MBQQoS("tcpsockets", 320, 320),
          MBQ::MBQQoS("othersockets", 320, 320),         MBQ::MBQQoS("tcpsendbuf", 1572864, 2424832),
          MBQ::MBQQoS("tcprecvbuf", 1572864, 2424832),   MBQ::MBQQoS("otherbuf", 1048576, 1900544),
          MBQ::MBQQoS("dgramrecvbuf", 196608, 196608),   MBQ::MBQQoS("diskblocks", 4194304, 4718592),
          MBQ::MBQQoS("inodes", 262144, 294912),         MBQ::MBQQoS("quotaids", 0),
          MBQ::MBQQoS("cpuweight", 500),                 MBQ::MBQQoS("cpulimit", 2550),
          MBQ::MBQQoS("cpus", 2),                        MBQ::MBQQoS("ioprio", 4)};
}

// The same with the changes of examples/containers/103.conf: four formulas violated.
std::set<MBQ::MBQQoS> violatingValues() {
  std::set<MBQ::MBQQoS> values;
  for (MBQ::MBQQoS qos : passingValues()) {
    if (qos.getId() == "numproc") qos = MBQ::MBQQoS("numproc", 800, 800);
    if (qos.getId() == "openfiles") qos = MBQ::MBQQoS("openfiles", 8192, 8000);
    if (qos.getId() == "tcpsendbuf") qos = MBQ::MBQQoS("tcpsendbuf", 1572864, 1572864);
    values.insert(qos);
  }
  return values;
}

// The values as validateQoSes hands them to the checker.
std::map<std::string, KTR::KTRQVParamsValue> checkedValues(const std::set<MBQ::MBQQoS>& qoses) {
  std::map<std::string, KTR::KTRQVParamsValue> values;
  for (const MBQ::MBQQoS& qos : qoses) {
    KTR::KTRQVParamsValue& value = values[qos.getId()];
    value.second = qos.getLimit();
    value.first = qos.getBarrier().isSpecified() ? qos.getBarrier().get() : qos.getLimit();
  }
  KTR::KTRQVParamsValue half = values["numproc"];
  half.first /= 2;
  half.second /= 2;
  values["avnumproc"] = half;
  return values;
}

void validate(benchmark::State& state, const std::set<MBQ::MBQQoS>& qoses, std::size_t expected) {
  KTR::KTREnvConfig config;
  config.setQoSes(qoses);
  MBQ::MBQVocMapSP vocabulary = KTR::defaultVocabulary();
  std::vector<KTR::KTRQoSValidation> out;
  for (auto _ : state) {
    out.clear();
    if (KTR::validateQoSes(&out, vocabulary, config) != 0 || out.size() != expected) {
      state.SkipWithError("unexpected validation result");
      break;
    }
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations());
}

void check(benchmark::State& state, const std::set<MBQ::MBQQoS>& qoses, std::size_t expected) {
  const MBQ::MBQVEnvConfig config;
  KTR::KTRQVTune tune(config, KTR::defaultVocabulary());
  if (tune.init() != 0) {
    state.SkipWithError("init failed");
    return;
  }
  const auto values = checkedValues(qoses);
  std::vector<KTR::KTRQVTuneFailure> failures;
  for (auto _ : state) {
    failures.clear();
    if (tune.checkParameters(values, failures) != 0 || failures.size() != expected) {
      state.SkipWithError("unexpected check result");
      break;
    }
    benchmark::DoNotOptimize(failures.data());
  }
  state.counters["formulas"] = static_cast<double>(tune.getFormulas().size());
  state.SetItemsProcessed(state.iterations());
}

void BM_ValidateQoSes(benchmark::State& state) { validate(state, passingValues(), 0); }
void BM_ValidateQoSesViolating(benchmark::State& state) { validate(state, violatingValues(), 4); }
void BM_CheckParameters(benchmark::State& state) { check(state, passingValues(), 0); }
void BM_CheckParametersViolating(benchmark::State& state) { check(state, violatingValues(), 4); }

}  // namespace

BENCHMARK(BM_ValidateQoSes);
BENCHMARK(BM_ValidateQoSesViolating);
BENCHMARK(BM_CheckParameters);
BENCHMARK(BM_CheckParametersViolating);
