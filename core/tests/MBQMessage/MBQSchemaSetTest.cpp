#include "MBQMessage/MBQSchemaSet.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"

namespace MBQ {
namespace {

const std::string kNs = "urn:test:a";
const std::string kSchemaHead =
    "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:a='urn:test:a' targetNamespace='urn:test:a' "
    "elementFormDefault='qualified'>";

// A base type, a type derived from it and a holder of the base, in two documents of one
// namespace (the second included by the first).
std::vector<MBQSchemaFile> goodFiles() {
  return {{"a.xsd", kSchemaHead + "<xs:include schemaLocation='a-more.xsd'/>"
                                  "<xs:complexType name='baseType'><xs:sequence>"
                                  "<xs:element name='n' type='xs:int'/></xs:sequence></xs:complexType>"
                                  "<xs:complexType name='derivedType'><xs:complexContent><xs:extension base='a:baseType'>"
                                  "<xs:sequence><xs:element name='m' type='xs:boolean'/></xs:sequence>"
                                  "</xs:extension></xs:complexContent></xs:complexType></xs:schema>"},
          {"a-more.xsd", kSchemaHead + "<xs:complexType name='holderType'><xs:sequence>"
                                       "<xs:element name='item' type='a:baseType' maxOccurs='unbounded'/>"
                                       "</xs:sequence></xs:complexType></xs:schema>"}};
}

TEST(MBQSchemaSetTest, LoadFailuresNameTheDocument) {
  const std::vector<std::pair<std::vector<MBQSchemaFile>, std::string>> cases = {
      {{{"x.xsd", "<notaschema/>"}}, "x.xsd: not an XML Schema document"},
      {{{"x.xsd", "<xs:schema"}}, "x.xsd: not an XML Schema document (line 1"},
      {{{"x.xsd", kSchemaHead + "<xs:import namespace='urn:b' schemaLocation='/etc/passwd'/></xs:schema>"}},
       "/etc/passwd: not a document of this schema set"},
      {{{"x.xsd", kSchemaHead + "<xs:complexType name='t'><xs:bogus/></xs:complexType></xs:schema>"}}, "x.xsd:1: "},
      {{{"x.xsd", kSchemaHead + "</xs:schema>"}, {"y.xsd", kSchemaHead + "</xs:schema>"}},
       "y.xsd: a second document for namespace \"urn:test:a\""},
      {{}, "no schema documents"},
  };
  for (const auto& [files, expected] : cases) {
    std::string error;
    EXPECT_EQ(nullptr, MBQSchemaSet::load(files, error));
    EXPECT_EQ(0u, error.find(expected)) << error;
  }
}

TEST(MBQSchemaSetTest, ValidatesTheRootAsItsDeclaredOrTheGivenType) {
  std::string error;
  const auto set = MBQSchemaSet::load(goodFiles(), error);
  ASSERT_NE(nullptr, set) << error;
  const std::string xsi = " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";
  struct Case {
    std::string text, type;
    int rc;
    std::string problem;  // "LINE: text" of the first problem
  };
  const std::vector<Case> cases = {
      {"<r xmlns:a='urn:test:a'><a:n>5</a:n></r>", "baseType", 0, ""},
      {"<r xmlns='urn:test:a'><n>5</n></r>", "baseType", 0, ""},
      {"<r xmlns:a='urn:test:a'>\n<a:n>x</a:n></r>", "baseType", 1,
       "2: Element 'a:n': 'x' is not a valid value of the atomic type 'xs:int'."},
      {"<r xmlns:a='urn:test:a'/>", "baseType", 1, "1: Element 'r': Missing child element(s). Expected is ( a:n )."},
      {"<r xmlns:a='urn:test:a'" + xsi + " xsi:type='a:derivedType'><a:n>5</a:n><a:m>1</a:m></r>", "baseType", 0, ""},
      {"<r xmlns:a='urn:test:a'><a:item" + xsi + " xsi:type='a:derivedType'><a:n>1</a:n><a:m>0</a:m></a:item></r>",
       "holderType", 0, ""},
      {"<r xmlns:a='urn:test:a'><a:item" + xsi + " xsi:type='a:holderType'><a:item><a:n>1</a:n></a:item></a:item></r>",
       "holderType", 1, ""},
      {"<r xmlns:a='urn:test:a'" + xsi + " xsi:type='a:nopeType'/>", "", 1, ""},
      {"<r/>", "", -1, "1: the root element r declares no schema type"},
      {"<r><n>", "baseType", -1, "1: not a well-formed message: "},
      {"<p:r/>", "baseType", -1, "1: not a well-formed message: "},
  };
  for (const Case& c : cases) {
    std::vector<MBQSchemaProblem> problems;
    EXPECT_EQ(c.rc, set->validate(c.text, kNs, c.type, problems)) << c.text;
    EXPECT_EQ(c.rc != 0, !problems.empty()) << c.text;
    if (!c.problem.empty() && !problems.empty()) {
      EXPECT_EQ(0u, (std::to_string(problems[0].line) + ": " + problems[0].text).find(c.problem)) << problems[0].text;
    }
  }
}

TEST(MBQSchemaSetTest, LoadsTheSchemaDocumentsOfADirectory) {
  std::string error;
  EXPECT_EQ(nullptr, MBQSchemaSet::loadDirectory("/nonexistent", error));
  EXPECT_EQ("/nonexistent: No such file or directory", error);
  test::TempDir dir;
  for (const MBQSchemaFile& file : goodFiles()) std::ofstream(dir.path() + "/" + file.name) << file.text;
  std::ofstream(dir.path() + "/notes.txt") << "not a schema";
  const auto set = MBQSchemaSet::loadDirectory(dir.path(), error);
  ASSERT_NE(nullptr, set) << error;
  std::vector<MBQSchemaProblem> problems;
  EXPECT_EQ(0, set->validate("<a:holder xmlns:a='urn:test:a'><a:item><a:n>1</a:n></a:item></a:holder>", kNs,
                             "holderType", problems));
}

}  // namespace
}  // namespace MBQ
