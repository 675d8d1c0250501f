#include "KTRFunctionality/KTRConfigEdit.h"

#include <map>
#include <set>
#include <sstream>

#include "KTRFunctionality/KTRBashParser.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"

namespace KTR {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool isNameChar(char c) {
  return c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// The name a line that is not a plain assignment still assigns, if any (see KTRConfigText).
std::string assignedName(const std::string& line) {
  std::string::size_type i = 0;
  auto skipBlanks = [&] {
    while (i < line.size() && isBlank(line[i])) ++i;
  };
  auto word = [&] {
    std::string::size_type begin = i;
    while (i < line.size() && !isBlank(line[i]) && line[i] != '=') ++i;
    return line.substr(begin, i - begin);
  };
  skipBlanks();
  std::string::size_type start = i;
  const std::string first = word();
  if (first == "export" || first == "readonly" || first == "declare" || first == "typeset" || first == "local") {
    skipBlanks();
    while (i < line.size() && line[i] == '-') {
      word();
      skipBlanks();
    }
    start = i;
  }
  i = start;
  while (i < line.size() && isNameChar(line[i])) ++i;
  if (i == start || (line[start] >= '0' && line[start] <= '9') || i >= line.size()) return "";
  const char after = line[i];
  const bool assigns = after == '=' || after == '[' || (after == '+' && i + 1 < line.size() && line[i + 1] == '=');
  return assigns ? line.substr(start, i - start) : "";
}

// A get side answering for the named keys only, in the order given.
class NamedValues {
 public:
  explicit NamedValues(const std::vector<KTRNamedValue>& changes) : changes_(changes) {
    for (const KTRNamedValue& change : changes) values_[MBQ::toLower(change.name)] = change.value;
  }
  int get(const std::string& key, std::string& value) const {
    auto found = values_.find(key);
    if (found == values_.end()) return kUnknownKey;
    value = found->second;
    return 0;
  }
  int getNext(std::string& key) {
    if (next_ >= changes_.size()) return -1;
    key = changes_[next_++].name;
    return 0;
  }

 private:
  const std::vector<KTRNamedValue>& changes_;
  std::map<std::string, std::string> values_;
  std::size_t next_ = 0;
};

int refuse(const char* format, const std::string& what) {
  MBQ::setErrorMessage(format, what.c_str());
  return -1;
}

}  // namespace

void scanConfigText(const std::string& text, KTRConfigText& scan) {
  scan = KTRConfigText();
  std::string buffer;
  unsigned long number = 0;
  for (std::string::size_type begin = 0; begin < text.size();) {
    std::string::size_type end = text.find('\n', begin);
    if (end == std::string::npos) end = text.size();
    ++number;
    buffer.assign(text, begin, end - begin);
    begin = end + 1;
    if (!buffer.empty() && buffer.back() == '\r' && scan.carriageReturnLine == 0) scan.carriageReturnLine = number;
    const std::string line = buffer;
    char* name = nullptr;
    char* value = nullptr;
    const int parsed = parseBashLine(&buffer[0], static_cast<int>(buffer.size()), &name, &value, nullptr, nullptr);
    if (parsed == MBQ::kBashStrAssignment) {
      scan.assignments.push_back({number, name, value});
    } else if (parsed == MBQ::kBashStrOpenQuote) {
      if (scan.openQuoteLine == 0) scan.openQuoteLine = number;
      scan.otherLines.push_back(number);
    } else if (parsed == MBQ::kBashStrNotAssignment) {
      scan.otherLines.push_back(number);
      std::string assigned = assignedName(line);
      if (!assigned.empty()) scan.unreadable.push_back({number, assigned, ""});
    }
  }
}

int checkConfigText(const KTRConfigText& scan) {
  if (scan.carriageReturnLine != 0) {
    MBQ::setErrorMessage("line %lu ends in a carriage return (DOS line ends), which bash reads into the value",
                         scan.carriageReturnLine);
    return -1;
  }
  if (scan.openQuoteLine != 0) {
    MBQ::setErrorMessage("line %lu: the value is not closed on its line", scan.openQuoteLine);
    return -1;
  }
  return 0;
}

namespace {

int notRead(const KTRAssignmentLine& line) {
  MBQ::setErrorMessage("line %lu assigns %s in a form that is not read (an expansion or a command)", line.line,
                       line.name.c_str());
  return -1;
}

}  // namespace

int findAssignment(const KTRConfigText& scan, const std::string& name, const KTRAssignmentLine*& found) {
  const std::string key = MBQ::toLower(name);
  const KTRAssignmentLine* last = nullptr;
  for (const KTRAssignmentLine& line : scan.assignments)
    if (MBQ::toLower(line.name) == key) last = &line;
  for (const KTRAssignmentLine& line : scan.unreadable)
    if (MBQ::toLower(line.name) == key && (last == nullptr || line.line > last->line)) return notRead(line);
  if (last == nullptr) return kKeyWithoutValue;
  found = last;
  return 0;
}

int findGlobalAssignment(const KTRConfigText& scan, const std::string& name, const KTRAssignmentLine*& found) {
  const std::string key = MBQ::toLower(name);
  if (key == "lockdir" || key == "template") return findAssignment(scan, name, found);
  const KTRAssignmentLine* first = nullptr;
  for (const KTRAssignmentLine& line : scan.assignments) {
    if (MBQ::toLower(line.name) == key) {
      first = &line;
      break;
    }
  }
  for (const KTRAssignmentLine& line : scan.unreadable)
    if (MBQ::toLower(line.name) == key && (first == nullptr || line.line < first->line)) return notRead(line);
  if (first == nullptr) return kKeyWithoutValue;
  found = first;
  return 0;
}

int setAssignments(const std::string& oldText, const std::vector<KTRNamedValue>& changes, KTRAppendedKeys appended,
                   std::string& newText) {
  KTRConfigText scan;
  scanConfigText(oldText, scan);
  if (checkConfigText(scan) != 0) return -1;
  std::set<std::string> seen;
  for (const KTRNamedValue& change : changes) {
    if (!isShellName(change.name)) return refuse("'%s' is not a key name (letters, digits and _)", change.name);
    const std::string key = MBQ::toLower(change.name);
    if (!seen.insert(key).second) return refuse("%s is given twice", change.name);
    if (!isWritableValue(change.value))
      return refuse("the value of %s holds a line break or NUL byte, which the file cannot hold", change.name);
    for (const KTRAssignmentLine& line : scan.unreadable) {
      if (MBQ::toLower(line.name) != key) continue;
      MBQ::setErrorMessage("line %lu assigns %s in a form that is not rewritten (an expansion or a command)",
                           line.line, line.name.c_str());
      return -1;
    }
    if (appended != KTRAppendedKeys::kAsGiven) continue;
    for (const KTRAssignmentLine& line : scan.assignments) {
      if (MBQ::toLower(line.name) != key || line.name == change.name) continue;
      MBQ::setErrorMessage("line %lu spells %s as %s; give the key as the file spells it", line.line,
                           change.name.c_str(), line.name.c_str());
      return -1;
    }
  }
  std::vector<KTRNamedValue> spelled = changes;
  if (appended == KTRAppendedKeys::kUpperCase)
    for (KTRNamedValue& change : spelled) change.name = MBQ::toUpper(change.name);
  NamedValues get(spelled);
  std::istringstream old(oldText);
  std::ostringstream out;
  SerializeOptions options;
  options.quoting = ValueQuoting::kShell;
  options.appendKeysAsGiven = true;
  options.keepLastLineOpen = true;
  const int rc = serializeBashLikeConfig(get, out, &old, true, options);
  if (rc != 0) return -1;
  newText = out.str();
  return 0;
}

}  // namespace KTR
