// A list of 1,000 updates of every kind (each template update carrying 5 application updates)
// read from XML text and written back to text through the derived readers and writers, versus
// parsing and serialising the same text with bare libxml2. The ratio of the two is what
// choosing each entry's class and running its codec costs. Beside them: reading the list alone,
// validating its text against the published schemas, and compiling those schemas.
#include <benchmark/benchmark.h>

#include "LibxmlBaseline.h"
#include "SchemaValidation.h"

#include <memory>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRRecordCatalog.h"
#include "KTRFunctionality/KTRUp2date.h"
#include "MBQMessage/MBQMessage.h"

namespace {

constexpr int kEntries = 1000;
constexpr int kAppsPerTemplate = 5;

template <class T>
std::shared_ptr<T> filled(int i) {
  auto update = std::make_shared<T>();
  update->setName(std::string("update-") + std::to_string(i));
  update->setKey(std::string("key-") + std::to_string(i));
  update->setSize(1024LL * i);
  update->setFlag(i % 3 == 0);
  update->setRelease(std::string("1.") + std::to_string(i % 17));
  if (i % 2) update->setInstalledVersion(std::string("1.0"));
  return update;
}

template <class T>
std::shared_ptr<T> templateUpdate(int i) {
  auto update = filled<T>(i);
  KTR::KTRUpdateList apps;
  for (int a = 0; a < kAppsPerTemplate; ++a) apps.push_back(filled<KTR::KTRAppTemplateUpdate>(i * 10 + a));
  update->setAppTemplates(apps);
  return update;
}

KTR::KTRUpdateList makeList() {
  KTR::KTRUpdateList list;
  for (int i = 0; i < kEntries; ++i) {
    switch (i % 8) {
      case 0: list.push_back(filled<KTR::KTRUpdate>(i)); break;
      case 1: {
        auto system = filled<KTR::KTRSystemUpdate>(i);
        system->setUpdateType(KTR::KTRSystemUpdate::Hotfix);
        system->setText1(std::string("kb") + std::to_string(i));
        list.push_back(system);
        break;
      }
      case 2: {
        auto windows = filled<KTR::KTRWindowsSystemUpdate>(i);
        windows->setUpdateType(KTR::KTRSystemUpdate::ServicePack);
        windows->setProduct(std::string("server"));
        list.push_back(windows);
        break;
      }
      case 3: list.push_back(filled<KTR::KTRSRNUpdate>(i)); break;
      case 4: list.push_back(filled<KTR::KTRAppTemplateUpdate>(i)); break;
      case 5: list.push_back(templateUpdate<KTR::KTRTemplateUpdate>(i)); break;
      case 6: list.push_back(templateUpdate<KTR::KTROsTemplateUpdate>(i)); break;
      default: list.push_back(templateUpdate<KTR::KTREzTemplateUpdate>(i)); break;
    }
  }
  return list;
}

std::string writeList(const KTR::KTRUpdateList& list) {
  MBQ::MBQMessage message;
  if (KTR::KTRUpdateList::Writer()(*message.iterator(), list) != 0) return std::string();
  return message.toString();
}

KTR::KTRUpdateList readList(benchmark::State& state, const std::string& text) {
  MBQ::MBQMessage parsed;
  if (parsed.parse(text) != 0) state.SkipWithError("parse failed");
  KTR::KTRUpdateList list;
  KTR::KTRUpdateList::Reader()(*parsed.iterator(), list);
  if (list.size() != static_cast<std::size_t>(kEntries)) state.SkipWithError("read failed");
  return list;
}

void BM_UpdateListThroughText(benchmark::State& state) {
  const std::string text = writeList(makeList());
  for (auto _ : state) {
    const std::string again = writeList(readList(state, text));
    if (again.size() != text.size()) state.SkipWithError("write differs");
    benchmark::DoNotOptimize(again.data());
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
  state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(BM_UpdateListThroughText)->Unit(benchmark::kMillisecond);

void BM_UpdateListRead(benchmark::State& state) {
  const std::string text = writeList(makeList());
  for (auto _ : state) {
    const KTR::KTRUpdateList list = readList(state, text);
    benchmark::DoNotOptimize(list.data());
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(BM_UpdateListRead)->Unit(benchmark::kMillisecond);

void BM_UpdateListValidate(benchmark::State& state) {
  validateAs(state, "KTRUpdateList", writeList(makeList()));
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(BM_UpdateListValidate)->Unit(benchmark::kMillisecond);

void BM_SchemaCompile(benchmark::State& state) {
  const std::vector<MBQ::MBQSchemaFile> files = KTR::recordSchemaFiles();
  for (auto _ : state) {
    std::string error;
    if (MBQ::MBQSchemaSet::load(files, error) == nullptr) state.SkipWithError(error.c_str());
  }
}
BENCHMARK(BM_SchemaCompile)->Unit(benchmark::kMillisecond);

void BM_BareLibxml2ParseAndSerialise(benchmark::State& state) {
  const std::string text = writeList(makeList());
  for (auto _ : state) {
    bareParseAndSerialise(text);
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
  state.counters["bytes"] = static_cast<double>(text.size());
}
BENCHMARK(BM_BareLibxml2ParseAndSerialise)->Unit(benchmark::kMillisecond);

}  // namespace
