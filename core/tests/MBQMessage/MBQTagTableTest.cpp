#include "MBQMessage/MBQTagTable.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {
namespace {

std::vector<MBQTagEntry> table() {
  std::size_t count = 0;
  const MBQTagEntry* entries = tagTable(&count);
  EXPECT_EQ(entries, tagTable(nullptr));  // the count is optional
  return std::vector<MBQTagEntry>(entries, entries + count);
}

// Id order is a compile-time check of the table; a name used twice fails the name look-up of
// one of its rows.
TEST(MBQTagTableTest, EveryNameIsAnXmlNameFoundByBothLookUps) {
  // Names that start with "xml" are reserved by XML itself.
  const std::regex xmlName("(?!xml)[a-z][a-z0-9_]*");
  for (const MBQTagEntry& entry : table()) {
    ASSERT_NE(nullptr, entry.name) << entry.id;
    EXPECT_TRUE(std::regex_match(entry.name, xmlName)) << entry.id << " " << entry.name;
    EXPECT_STREQ(entry.name, tagName(entry.id));
    // A copy of the text, not the table's own pointer, must find the id.
    EXPECT_EQ(entry.id, tagId(std::string(entry.name).c_str())) << entry.name;
  }
}

// Each constant of MBQTags.h is named as its element in CamelCase.
TEST(MBQTagTableTest, ConstantsAreTheElementNamesInCamelCase) {
  auto camel = [](const std::string& element) {
    std::string name;
    bool upper = true;
    for (char c : element) {
      if (c != '_') name += upper ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
      upper = c == '_';
    }
    return name;
  };
#define CHECK_ROW(id, name, element) EXPECT_EQ(camel(element), #name);
  MBQ_TAGS(CHECK_ROW)
#undef CHECK_ROW
}

// docs/tag-table.md lists exactly the table's rows, in order.
TEST(MBQTagTableTest, TheDocumentListsTheTable) {
  std::ifstream in(std::string(KTR_SOURCE_DIR) + "/docs/tag-table.md");
  ASSERT_TRUE(in) << "docs/tag-table.md";
  std::vector<std::pair<int, std::string>> listed;
  const std::regex row(R"(^\| (\d+) \| `([a-z0-9_]+)` \|)");
  for (std::string line; std::getline(in, line);) {
    std::smatch match;
    if (std::regex_search(line, match, row)) listed.emplace_back(std::stoi(match[1]), match[2]);
  }
  std::vector<std::pair<int, std::string>> expected;
  for (const MBQTagEntry& entry : table()) expected.emplace_back(entry.id, entry.name);
  EXPECT_EQ(expected, listed);
}

TEST(MBQTagTableTest, UnknownAndReservedNamesAndIdsAreNotFound) {
  for (const auto& row : test::caseRows(__FILE__, "used-by-string"))
    for (const std::string& name : row) EXPECT_EQ(0, tagId(name.c_str())) << name;
  for (int id : {0, -1, 1, 1001, 1003, 1288, 2290, 2292, 99999}) EXPECT_EQ(nullptr, tagName(id)) << id;
  EXPECT_EQ(0, tagId(nullptr));
  // Look-up is exact and case-sensitive; the neighbours of a name in the sorted index miss.
  for (const char* name : {"", "VEID", "veid ", "vei", "zzz", "a"}) EXPECT_EQ(0, tagId(name)) << name;
}

TEST(MBQDefaultMapTest, OnlyTheCoreNamespaceAndTypesHaveIds) {
  EXPECT_STREQ(kCoreTypesNamespace, MBQDefaultMap::findNSID(292));
  EXPECT_EQ(292, MBQDefaultMap::findNSByURI(std::string(kCoreTypesNamespace).c_str()));
  for (int id : {0, -292, 1, 291, 293}) EXPECT_EQ(nullptr, MBQDefaultMap::findNSID(id)) << id;
  // The library's namespaces are written by URI only.
  for (const char* uri :
       {kTypesNamespace, kUpdateNamespace, kRelocatorNamespace, kXsiNamespace, "", MBQ_NAMESPACE_HOST})
    EXPECT_EQ(0, MBQDefaultMap::findNSByURI(uri)) << uri;
  EXPECT_EQ(0, MBQDefaultMap::findNSByURI(nullptr));
  for (int id : {0, 100, 119, 123, 150, 153, 166, 168, 292}) EXPECT_EQ(nullptr, MBQDefaultMap::findTypeID(id)) << id;
}

}  // namespace
}  // namespace MBQ
