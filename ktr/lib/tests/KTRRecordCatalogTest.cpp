#include "KTRFunctionality/KTRRecordCatalog.h"

#include <gtest/gtest.h>

#include <dirent.h>

#include <cctype>

#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessage.h"

// Every record the library reads and writes, against its fixture in records/: the full form
// (every element the writer can write, lists of two) reads and writes back byte for byte, and
// each child of the record, taken away, either fails the read with an error naming it or
// leaves exactly the rest, as records/layouts.txt says. Adding a record means adding its
// fixture and its layout line.

namespace KTR {

void PrintTo(const KTRRecordType& type, std::ostream* out) { *out << type.name; }

namespace {

using testing::slurp;

const std::string kRecords = KTR_RECORDS_DIR;

std::string fileName(std::string name) {
  for (std::size_t at; (at = name.find("::")) != std::string::npos;) name.replace(at, 2, ".");
  for (std::size_t at; (at = name.find('<')) != std::string::npos;) name[at] = '-';
  for (std::size_t at; (at = name.find('>')) != std::string::npos;) name.erase(at, 1);
  return name + ".xml";
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

// "CLASS: child child? child~ ...": per child of the fixture's root, in order, whether taking
// it away fails the read (bare name), drops only it (?) or has the writer put a default in its
// place (~).
std::map<std::string, std::string> layouts() {
  std::map<std::string, std::string> found;
  for (const std::string& line : lines(slurp(kRecords + "/layouts.txt"))) {
    if (line.empty() || line[0] == '#') continue;
    const auto colon = line.find(": ");
    if (colon != std::string::npos) found[line.substr(0, colon)] = line.substr(colon + 2);
  }
  return found;
}

struct Child {
  std::string name;
  std::size_t first, end;  // its lines in the pretty-printed fixture
};

// The root's children of a pretty-printed message: lines indented by exactly two spaces open
// one, and it runs until the next such line or the root's end tag.
std::vector<Child> children(const std::vector<std::string>& text) {
  std::vector<Child> found;
  for (std::size_t i = 2; i + 1 < text.size(); ++i) {
    const std::string& line = text[i];
    if (line.compare(0, 3, "  <") != 0 || line.compare(0, 4, "  </") == 0) continue;
    if (!found.empty()) found.back().end = i;
    const std::size_t nameEnd = line.find_first_of(" />", 3);
    std::string name = line.substr(3, nameEnd - 3);
    if (const auto colon = name.find(':'); colon != std::string::npos) name.erase(0, colon + 1);
    found.push_back({name, i, 0});
  }
  if (!found.empty()) found.back().end = text.size() - 1;
  return found;
}

struct Outcome {
  int rc = 0;
  std::string written, error;
};

Outcome roundTrip(const KTRRecordType& type, const std::string& text, bool derived) {
  Outcome outcome;
  MBQ::MBQMessage in, out;
  if (in.parse(text) != 0) return {-2, "", "unparsable"};
  int readStatus = 0;
  outcome.rc = (derived ? type.roundTripDerived : type.roundTrip)(*in.iterator(), out, readStatus);
  outcome.error = MBQ::getErrorMessage();
  if (outcome.rc == 0) outcome.written = out.toString(true);
  return outcome;
}

// The text as the writer would print it: a parse and a pretty print.
std::string canonical(const std::string& text) {
  MBQ::MBQMessage message;
  return message.parse(text) == 0 ? message.toString(true) : "";
}

TEST(KTRRecordCatalogTest, EveryRecordHasAFixtureAndALayoutAndNothingElseDoes) {
  std::set<std::string> expected = {"layouts.txt"};
  for (const KTRRecordType& type : recordTypes()) expected.insert(fileName(type.name));
  std::set<std::string> present;
  DIR* dir = ::opendir(kRecords.c_str());
  ASSERT_NE(nullptr, dir);
  while (const dirent* entry = ::readdir(dir))
    if (entry->d_name[0] != '.') present.insert(entry->d_name);
  ::closedir(dir);
  EXPECT_EQ(expected, present);
  std::set<std::string> laidOut, named;
  for (const auto& entry : layouts()) laidOut.insert(entry.first);
  for (const KTRRecordType& type : recordTypes()) named.insert(type.name);
  EXPECT_EQ(named, laidOut);
}

// A record described by a layout says what the fixture shows: the same children in the same
// order, each repeated one twice, and exactly the single required ones fail the read when taken
// away.
void expectLayoutAgrees(const KTRRecordType& type, const std::string& observed) {
  if (type.elements.empty()) return;
  std::string expected;
  for (const KTRRecordElement& element : type.elements) {
    if (element.name.empty()) return;  // a base with a hand-written codec: nothing to compare
    const std::string one = element.name + (element.required && !element.repeated ? "" : "?");
    expected += (expected.empty() ? "" : " ") + one + (element.repeated ? " " + one : "");
  }
  std::string seen = observed;
  for (std::size_t at; (at = seen.find('~')) != std::string::npos;) seen[at] = '?';
  EXPECT_EQ(expected, seen) << type.name << ": the layout against the fixture";
}

class KTRRecordFixtureTest : public ::testing::TestWithParam<KTRRecordType> {};

TEST_P(KTRRecordFixtureTest, FullFormRoundTripsAndEachChildIsRequiredOrDropsAlone) {
  const KTRRecordType& type = GetParam();
  const std::string fixture = slurp(kRecords + "/" + fileName(type.name));
  ASSERT_FALSE(fixture.empty()) << fileName(type.name);
  const Outcome full = roundTrip(type, fixture, false);
  ASSERT_EQ(0, full.rc) << full.error;
  EXPECT_EQ(fixture, full.written);
  if (type.roundTripDerived != nullptr) {
    const Outcome derived = roundTrip(type, fixture, true);
    ASSERT_EQ(0, derived.rc) << derived.error;
    EXPECT_EQ(fixture, derived.written) << "read through the registry of its base";
  }

  const std::vector<std::string> text = lines(fixture);
  std::string layout;
  for (const Child& child : children(text)) {
    std::string rest;
    for (std::size_t i = 0; i < text.size(); ++i)
      if (i < child.first || i >= child.end) rest += text[i] + "\n";
    const Outcome without = roundTrip(type, rest, false);
    layout += (layout.empty() ? "" : " ") + child.name;
    if (without.rc != 0) {
      EXPECT_NE(std::string::npos, without.error.find(child.name))
          << "the error names the missing element: " << without.error;
    } else {
      layout += without.written == canonical(rest) ? "?" : "~";
    }
  }
  EXPECT_EQ(layouts()[type.name], layout) << type.name << ": " << layout;
  expectLayoutAgrees(type, layout);
}

std::string testName(const ::testing::TestParamInfo<KTRRecordType>& info) {
  std::string name;
  for (char c : info.param.name) name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(Catalog, KTRRecordFixtureTest, ::testing::ValuesIn(recordTypes()), testName);

}  // namespace
}  // namespace KTR
