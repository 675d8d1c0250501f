#pragma once

#include <cstddef>

// The schema documents compiled into the library (generated from its build file).

namespace KTR {

struct KTRBuiltInSchema {
  const char* name;
  const unsigned char* bytes;
  std::size_t size;
};

extern const KTRBuiltInSchema kBuiltInSchemas[];
extern const std::size_t kBuiltInSchemaCount;

}  // namespace KTR
