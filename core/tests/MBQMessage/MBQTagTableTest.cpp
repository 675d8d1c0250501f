#include "MBQMessage/MBQTagTable.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTags.h"

namespace {

using MBQ::MBQDefaultMap;
using MBQ::MBQTagEntry;
using MBQ::tagId;
using MBQ::tagName;

// Element names that records address by string, and the core records' own element names: a
// tag with one of these names would make the cursor find the wrong element.
const char* const kNamesUsedByString[] = {
    // Generic records of the core.
    "parent_eid", "status", "state", "since", "alert", "reason", "config", "virtual_config", "vt_name", "vt_version",
    "settings_version", "os_name", "os_version", "hostname", "description", "nameserver", "search_domain", "os",
    "architecture", "env_type", "platform", "ifname", "gateway", "gateway6", "dhcp", "dhcp6", "mac", "device",
    "mount_point", "fs_type",
    // The technology's records.
    "ctid", "netfilter", "ve_type", "wins_server", "ts_license_server", "ts_mode", "uuid", "allow_reboot",
    "interface_rate", "origin_sample", "features", "devnodes", "disk_list", "expanded", "client_ip", "client_port",
    "sve_eid", "lock_dir", "template_dir", "no_offline_service", "qoses", "value_type", "connection", "disabled",
    "config_customized", "class_id", "host_routed", "standard", "product", "autoreboot", "check_period", "yum",
    "installed_version", "app_template", "base_url", "repository", "technology", "uptodate", "net_device_id",
    "expire", "disk_space", "diks_inodes", "update",
    // option spellings, written as element names
    "automatic", "auto_download", "manual", "explorer", "custom", "no_proxy", "sunday", "monday", "tuesday",
    "wednesday", "thursday", "friday", "saturday", "hotfix", "servicepack", "version",
    // the core records' elements
    "id", "barrier", "limit", "interface", "class", "rate", "message", "clone_flags", "result", "log_level",
    "cpu_user", "cpu_system", "cpu_idle",
};

std::vector<MBQTagEntry> table() {
  std::size_t count = 0;
  const MBQTagEntry* entries = MBQ::tagTable(&count);
  EXPECT_EQ(entries, MBQ::tagTable(nullptr));  // the count is optional
  return std::vector<MBQTagEntry>(entries, entries + count);
}

bool isXmlName(const std::string& name) {
  if (name.empty() || !(name[0] >= 'a' && name[0] <= 'z')) return false;
  // Names that start with "xml" in any case are reserved by XML itself.
  if (name.compare(0, 3, "xml") == 0) return false;
  for (char c : name)
    if (!((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_')) return false;
  return true;
}

// Id order is a compile-time check of the table; a name used twice fails the name look-up of
// one of its rows.
TEST(MBQTagTableTest, EveryNameIsAnXmlNameFoundByBothLookUps) {
  for (const MBQTagEntry& entry : table()) {
    ASSERT_NE(nullptr, entry.name) << entry.id;
    EXPECT_TRUE(isXmlName(entry.name)) << entry.id << " " << entry.name;
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
  for (const char* name : kNamesUsedByString) EXPECT_EQ(0, tagId(name)) << name;
  for (int id : {0, -1, 1, 1001, 1003, 1288, 2290, 2292, 99999}) EXPECT_EQ(nullptr, tagName(id)) << id;
  EXPECT_EQ(0, tagId(nullptr));
  // Look-up is exact and case-sensitive; the neighbours of a name in the sorted index miss.
  for (const char* name : {"", "VEID", "veid ", "vei", "zzz", "a"}) EXPECT_EQ(0, tagId(name)) << name;
}

TEST(MBQDefaultMapTest, OnlyTheCoreNamespaceAndTypesHaveIds) {
  EXPECT_STREQ(MBQ::kCoreTypesNamespace, MBQDefaultMap::findNSID(292));
  EXPECT_EQ(292, MBQDefaultMap::findNSByURI(std::string(MBQ::kCoreTypesNamespace).c_str()));
  for (int id : {0, -292, 1, 291, 293}) EXPECT_EQ(nullptr, MBQDefaultMap::findNSID(id)) << id;
  // The library's namespaces are written by URI only.
  for (const char* uri : {MBQ::kTypesNamespace, MBQ::kUpdateNamespace, MBQ::kRelocatorNamespace,
                          MBQ::kXsiNamespace, "", MBQ_NAMESPACE_HOST})
    EXPECT_EQ(0, MBQDefaultMap::findNSByURI(uri)) << uri;
  EXPECT_EQ(0, MBQDefaultMap::findNSByURI(nullptr));
  for (int id : {0, 100, 119, 123, 150, 153, 166, 168, 292}) EXPECT_EQ(nullptr, MBQDefaultMap::findTypeID(id)) << id;
}

}  // namespace
