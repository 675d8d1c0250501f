// Arbitrary bytes as a file and an edit of it: the input's first line is "KEY=VALUE", the rest
// is the file. Whenever the edit is accepted, the named key must read back as the value, and
// every line that did not assign the key must be unchanged.
#include <sstream>
#include <vector>

#include "FuzzTarget.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "MBQCore/MBQString.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input = inputText(data, size);
  const std::string::size_type firstEnd = input.find('\n');
  if (firstEnd == std::string::npos) return 0;
  const std::string assignment = input.substr(0, firstEnd);
  const std::string::size_type equals = assignment.find('=');
  if (equals == std::string::npos) return 0;
  const KTR::KTRNamedValue change{assignment.substr(0, equals), assignment.substr(equals + 1)};
  const std::string text = input.substr(firstEnd + 1);

  std::string edited;
  const KTR::KTRAppendedKeys appended = size % 2 ? KTR::KTRAppendedKeys::kAsGiven : KTR::KTRAppendedKeys::kUpperCase;
  if (KTR::setAssignments(text, {change}, appended, edited) != 0) return 0;

  KTR::KTRConfigText before, after;
  KTR::scanConfigText(text, before);
  KTR::scanConfigText(edited, after);
  const KTR::KTRAssignmentLine* found = nullptr;
  if (KTR::findAssignment(after, change.name, found) != 0 || found->value != change.value) std::abort();

  const auto linesOf = [](const std::string& file) {
    std::vector<std::string> lines;
    std::istringstream in(file);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
  };
  const std::vector<std::string> oldLines = linesOf(text);
  const std::vector<std::string> newLines = linesOf(edited);
  if (newLines.size() < oldLines.size()) std::abort();
  const std::string key = MBQ::toLower(change.name);
  for (std::size_t i = 0; i < oldLines.size(); ++i) {
    bool ofKey = false;
    for (const KTR::KTRAssignmentLine& line : before.assignments)
      ofKey = ofKey || (line.line == i + 1 && MBQ::toLower(line.name) == key);
    if (!ofKey && oldLines[i] != newLines[i]) std::abort();
  }
  return 0;
}
