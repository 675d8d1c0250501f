#pragma once

// Validating a message's text against the published schemas as one record class, the way
// `ktrctl msg validate --as CLASS` does: parse, type the root, validate.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "KTRFunctionality/KTRRecordCatalog.h"

inline void validateAs(benchmark::State& state, const std::string& className, const std::string& text) {
  const MBQ::MBQSchemaSet* schemas = KTR::recordSchemas();
  const KTR::KTRRecordType* type = KTR::findRecordType(className);
  for (auto _ : state) {
    std::vector<MBQ::MBQSchemaProblem> problems;
    if (schemas->validate(text, type->ns, type->publishedType, problems) != 0)
      state.SkipWithError(("not valid: " + problems.front().text).c_str());
  }
}
