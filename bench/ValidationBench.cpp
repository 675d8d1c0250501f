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
  return {MBQ::MBQQoS("kmemsize", 14372700, 14790164),  MBQ::MBQQoS("dcachesize", 3409920, 3624960),
          MBQ::MBQQoS("privvmpages", 65536, 69632),     MBQ::MBQQoS("physpages", 0, kUnlimited),
          MBQ::MBQQoS("swappages", 0, 262144),          MBQ::MBQQoS("shmpages", 21504, 21504),
          MBQ::MBQQoS("lockedpages", 256, 256),         MBQ::MBQQoS("vmguarpages", 33792, kUnlimited),
          MBQ::MBQQoS("oomguarpages", 26112, kUnlimited), MBQ::MBQQoS("slmmemorylimit", 536870912),
          MBQ::MBQQoS("numproc", 240, 240),             MBQ::MBQQoS("avnumproc", 180),
          MBQ::MBQQoS("numfile", 9312, 9312),           MBQ::MBQQoS("numflock", 188, 206),
          MBQ::MBQQoS("numpty", 16, 16),                MBQ::MBQQoS("numsiginfo", 256, 256),
          MBQ::MBQQoS("numiptent", 128, 128),           MBQ::MBQQoS("numtcpsock", 360, 360),
          MBQ::MBQQoS("numothersock", 360, 360),        MBQ::MBQQoS("tcpsndbuf", 1720320, 2703360),
          MBQ::MBQQoS("tcprcvbuf", 1720320, 2703360),   MBQ::MBQQoS("othersockbuf", 1126080, 2097152),
          MBQ::MBQQoS("dgramrcvbuf", 262144, 262144),   MBQ::MBQQoS("diskspace", 2097152, 2306867),
          MBQ::MBQQoS("diskinodes", 200000, 220000),    MBQ::MBQQoS("quotaugidlimit", 0),
          MBQ::MBQQoS("cpuunits", 1000),                MBQ::MBQQoS("cpulimit", 2550),
          MBQ::MBQQoS("cpus", 2),                       MBQ::MBQQoS("ioprio", 4)};
}

// The same with the changes of examples/containers/103.conf: four formulas violated.
std::set<MBQ::MBQQoS> violatingValues() {
  std::set<MBQ::MBQQoS> values;
  for (MBQ::MBQQoS qos : passingValues()) {
    if (qos.getId() == "numproc") qos = MBQ::MBQQoS("numproc", 800, 800);
    if (qos.getId() == "numfile") qos = MBQ::MBQQoS("numfile", 9312, 9000);
    if (qos.getId() == "tcpsndbuf") qos = MBQ::MBQQoS("tcpsndbuf", 1720320, 1720320);
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
