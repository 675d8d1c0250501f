// Arbitrary bytes as one line of a configuration file. The tokeniser must never read or write
// outside the line; an accepted line must report a value span inside it, with a value no
// longer than the span, and a refused line must come back unchanged.
#include <cstring>
#include <vector>

#include "FuzzTarget.h"
#include "MBQFunctionalityCore/MBQBashStr.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::vector<char> line(data, data + size);
  line.push_back('\0');
  const std::vector<char> original = line;
  const unsigned long length = std::strlen(original.data());
  char* name = nullptr;
  char* value = nullptr;
  unsigned long begin = 0;
  unsigned long end = 0;
  const int result = MBQ::parseBashStr(line.data(), &name, &value, &begin, &end);
  if (result != MBQ::kBashStrAssignment) {
    if (line != original || name != nullptr || value != nullptr) std::abort();
    if (result != MBQ::kBashStrSkip && result != MBQ::kBashStrNotAssignment && result != MBQ::kBashStrOpenQuote)
      std::abort();
    return 0;
  }
  const char* first = line.data();
  const char* last = line.data() + length;
  // An empty value has end == begin - 1; any other ends on a byte of the line.
  if (begin < 2 || begin > length || end + 1 < begin || (end >= begin && end >= length)) std::abort();
  if (original[begin - 1] != '=') std::abort();
  if (name < first || name >= last || value < first || value > last) std::abort();
  if (std::strlen(name) == 0 || std::strlen(value) > end + 1 - begin) std::abort();
  return 0;
}
