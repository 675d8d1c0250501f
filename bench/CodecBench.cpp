// The message codec against bare libxml2 on the same document: 10,000 QoS records written
// through the codec, serialised, parsed and read back, versus parsing and serialising the
// resulting text alone. The ratio of the two is the codec's overhead.
#include <benchmark/benchmark.h>

#include "LibxmlBaseline.h"

#include <string>
#include <vector>

#include "MBQFunctionalityCore/MBQQoS.h"
#include "MBQMessage/MBQMessage.h"

namespace {

constexpr int kRecords = 10000;

std::vector<MBQ::MBQQoS> makeRecords() {
  std::vector<MBQ::MBQQoS> records;
  records.reserve(kRecords);
  for (int i = 0; i < kRecords; ++i) {
    if (i % 2)
      records.emplace_back("res" + std::to_string(i % 50), 1000LL * i, 2000LL * i + 7);
    else
      records.emplace_back("res" + std::to_string(i % 50), 4096LL * i);
  }
  return records;
}

std::string writeAndSerialise(const std::vector<MBQ::MBQQoS>& records) {
  MBQ::MBQMessage message;
  MBQ::MBQWriterList(MBQ::MBQQoS::Writer(), 1476)(*message.iterator(), records);
  return message.toString();
}

void BM_CodecRoundTrip(benchmark::State& state) {
  const auto records = makeRecords();
  for (auto _ : state) {
    const std::string text = writeAndSerialise(records);
    MBQ::MBQMessage parsed;
    if (parsed.parse(text) != 0) state.SkipWithError("parse failed");
    std::vector<MBQ::MBQQoS> back;
    back.reserve(kRecords);
    if (MBQ::MBQReaderList(MBQ::MBQQoS::Reader(), 1476)(*parsed.iterator(), back) != 0 ||
        back.size() != records.size())
      state.SkipWithError("read failed");
    benchmark::DoNotOptimize(back.data());
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(BM_CodecRoundTrip)->Unit(benchmark::kMillisecond);

void BM_BareLibxml2ParseAndSerialise(benchmark::State& state) {
  const std::string text = writeAndSerialise(makeRecords());
  for (auto _ : state) {
    bareParseAndSerialise(text);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
  state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(BM_BareLibxml2ParseAndSerialise)->Unit(benchmark::kMillisecond);

}  // namespace
