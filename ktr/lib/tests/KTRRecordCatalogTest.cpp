#include "KTRFunctionality/KTRRecordCatalog.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cctype>
#include <filesystem>
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
// leaves exactly the rest, as records/layouts.txt says. Whatever is written is valid against
// the published schemas. Adding a record means adding its fixture and its layout line.

namespace KTR {

void PrintTo(const KTRRecordType& type, std::ostream* out) { *out << type.name; }

namespace {

const std::string kRecords = KTR_RECORDS_DIR;

std::string fileName(std::string name) {
  for (std::size_t at; (at = name.find("::")) != std::string::npos;) name.replace(at, 2, ".");
  for (std::size_t at; (at = name.find('<')) != std::string::npos;) name[at] = '-';
  for (std::size_t at; (at = name.find('>')) != std::string::npos;) name.erase(at, 1);
  return name + ".xml";
}

// "CLASS: child child? child~ ...": per child of the fixture's root, in order, whether taking
// it away fails the read (bare name), drops only it (?) or has the writer put a default in its
// place (~).
std::map<std::string, std::string> layouts() {
  std::map<std::string, std::string> found;
  for (const std::string& line : testing::linesOf(testing::slurp(kRecords + "/layouts.txt"))) {
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
  MBQ::MBQMessage in, out;
  if (in.parse(text) != 0) return {-2, "", "unparsable"};
  int readStatus = 0;
  const int rc = (derived ? type.roundTripDerived : type.roundTrip)(*in.iterator(), out, readStatus);
  const std::string error = MBQ::getErrorMessage();
  return {rc, rc == 0 ? out.toString(true) : "", error};
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
  for (const auto& entry : std::filesystem::directory_iterator(kRecords))
    if (entry.path().filename().string()[0] != '.') present.insert(entry.path().filename());
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
  const std::string fixture = testing::slurp(kRecords + "/" + fileName(type.name));
  ASSERT_FALSE(fixture.empty()) << fileName(type.name);
  const Outcome full = roundTrip(type, fixture, false);
  ASSERT_EQ(0, full.rc) << full.error;
  EXPECT_EQ(fixture, full.written);
  testing::expectSchemaValid(type, full.written);
  if (type.roundTripDerived != nullptr) {
    const Outcome derived = roundTrip(type, fixture, true);
    ASSERT_EQ(0, derived.rc) << derived.error;
    EXPECT_EQ(fixture, derived.written) << "read through the registry of its base";
  }

  const std::vector<std::string> text = testing::linesOf(fixture);
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
      testing::expectSchemaValid(type, without.written);
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

// What the published schemas define and use, read from their text: each named type as
// "{namespace}name", the classes its appinfo names, the type it derives from, and every type an
// element or a list refers to.
struct SchemaIndex {
  std::map<std::string, std::vector<std::string>> classesOfType;
  std::map<std::string, std::string> baseOf;
  std::set<std::string> referenced;

  // The types in use: those that describe a record or that something refers to, the types
  // they derive from, and every type that derives from one in use (through xsi:type it may
  // stand wherever its base does).
  std::set<std::string> used() const {
    std::set<std::string> found = referenced;
    for (const auto& [type, classes] : classesOfType)
      if (!classes.empty()) found.insert(type);
    for (std::size_t before = 0; before != found.size();) {
      before = found.size();
      for (const auto& [type, base] : baseOf)
        if (found.count(type) != 0 || found.count(base) != 0) found.insert({type, base});
    }
    return found;
  }

  void add(const MBQ::MBQSchemaFile& file) {
    xmlDocPtr doc = xmlReadMemory(file.text.data(), static_cast<int>(file.text.size()), file.name.c_str(), nullptr,
                                  XML_PARSE_NONET);
    ASSERT_NE(nullptr, doc) << file.name;
    xmlNodePtr root = xmlDocGetRootElement(doc);
    const std::string tns = property(root, "targetNamespace");
    for (xmlNodePtr child = root->children; child != nullptr; child = child->next)
      if (is(child, "complexType") || is(child, "simpleType")) classesOfType["{" + tns + "}" + property(child, "name")];
    walk(doc, root, tns, nullptr);
    xmlFreeDoc(doc);
  }

 private:
  static bool is(xmlNodePtr node, const char* name) {
    return node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, BAD_CAST name);
  }
  static std::string property(xmlNodePtr node, const char* name) {
    xmlChar* value = xmlGetProp(node, BAD_CAST name);
    std::string out = value != nullptr ? reinterpret_cast<const char*>(value) : "";
    xmlFree(value);
    return out;
  }
  static std::vector<std::string> resolved(xmlDocPtr doc, xmlNodePtr node, const std::string& qnames) {
    std::vector<std::string> names;
    std::istringstream words(qnames);
    for (std::string qname; words >> qname;) {
      const auto colon = qname.find(':');
      const std::string prefix = colon == std::string::npos ? "" : qname.substr(0, colon);
      xmlNsPtr ns = xmlSearchNs(doc, node, prefix.empty() ? nullptr : BAD_CAST prefix.c_str());
      names.push_back("{" + std::string(ns != nullptr ? reinterpret_cast<const char*>(ns->href) : "") + "}" +
                      qname.substr(colon == std::string::npos ? 0 : colon + 1));
    }
    return names;
  }
  void walk(xmlDocPtr doc, xmlNodePtr node, const std::string& tns, const std::string* type) {
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
      if (child->type != XML_ELEMENT_NODE) continue;
      for (const char* attribute : {"type", "memberTypes"})
        for (const std::string& name : resolved(doc, child, property(child, attribute))) referenced.insert(name);
      for (const std::string& name : resolved(doc, child, property(child, "base")))
        if (type != nullptr) baseOf[*type] = name;
      std::string named;
      if (node->parent != nullptr && node->parent->type == XML_DOCUMENT_NODE && property(child, "name") != "")
        named = "{" + tns + "}" + property(child, "name");
      const std::string* owner = named.empty() ? type : &named;
      if (is(child, "appinfo") && owner != nullptr) {
        xmlChar* text = xmlNodeGetContent(child);
        classesOfType[*owner].push_back(reinterpret_cast<const char*>(text));
        xmlFree(text);
      }
      walk(doc, child, tns, owner);
    }
  }
};

TEST(KTRRecordCatalogTest, SchemasDescribeEveryRecordOnceAndDefineNothingUnused) {
  SchemaIndex index;
  for (const MBQ::MBQSchemaFile& file : recordSchemaFiles()) index.add(file);
  const std::set<std::string> used = index.used();
  std::map<std::string, std::string> typeOfClass;
  for (const auto& [type, classes] : index.classesOfType) {
    for (const std::string& name : classes) {
      EXPECT_NE(nullptr, findRecordType(name)) << type << " names " << name << ", which is no record";
      EXPECT_TRUE(typeOfClass.emplace(name, type).second) << name << " is described twice";
    }
    EXPECT_EQ(1u, used.count(type)) << type << " describes no record and no part of one";
  }
  for (const KTRRecordType& type : recordTypes())
    EXPECT_EQ("{" + type.ns + "}" + type.publishedType, typeOfClass[type.name]) << type.name;
}

}  // namespace
}  // namespace KTR
