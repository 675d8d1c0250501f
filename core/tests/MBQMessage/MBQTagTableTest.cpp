#include "MBQMessage/MBQTagTable.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <iterator>
#include <string>
#include <vector>

#include "MBQMessage/MBQNamespaces.h"

namespace {

using MBQ::MBQDefaultMap;
using MBQ::MBQTagEntry;
using MBQ::tagId;
using MBQ::tagName;

// Every tag id the library's records, readers and writers use.
constexpr int kUsedIds[] = {
    1002, 1004, 1007, 1010, 1012, 1017, 1018, 1023, 1024, 1025, 1026, 1032, 1034, 1065, 1066,
    1067, 1070, 1094, 1099, 1100, 1101, 1118, 1152, 1156, 1185, 1189, 1223, 1224, 1226, 1231,
    1232, 1248, 1250, 1251, 1252, 1253, 1262, 1264, 1274, 1275, 1276, 1278, 1281, 1295, 1301,
    1302, 1304, 1305, 1307, 1315, 1323, 1328, 1338, 1346, 1347, 1377, 1405, 1417, 1463, 1476,
    1479, 1480, 1481, 1496, 1497, 1498, 1499, 1501, 1502, 1509, 1511, 1538, 1549, 1550, 1556,
    1557, 1573, 1579, 1582, 1586, 1632, 1647, 1652, 1704, 1705, 1733, 1747, 1780, 1786, 1795,
    1803, 1811, 1813, 1818, 1837, 1839, 1843, 1846, 1857, 1859, 1899, 1992, 2005, 2047, 2053,
    2291,
};

// Element names that records address by string, and the core records' own element names: a
// tag with one of these names would make the cursor find the wrong element.
const char* const kNamesUsedByString[] = {
    // Generic records of the core.
    "parent_eid", "status", "state", "since", "alert", "reason", "config", "virtual_config", "vt_name",
    "vt_version", "settings_version", "os_name", "os_version", "hostname", "description", "nameserver",
    "search_domain", "os", "architecture", "env_type", "platform", "ifname", "gateway", "gateway6", "dhcp",
    "dhcp6", "mac", "device", "mount_point", "fs_type",
    // The technology's records.
    "ctid", "netfilter", "ve_type", "wins_server", "ts_license_server", "ts_mode", "uuid",
    "allow_reboot", "interface_rate", "origin_sample", "features", "devnodes", "disk_list",
    "expanded", "client_ip", "client_port", "sve_eid", "lock_dir", "template_dir",
    "no_offline_service", "qoses", "value_type", "connection", "disabled", "config_customized",
    "class_id", "host_routed", "standard", "product", "autoreboot", "check_period", "yum",
    "installed_version", "app_template", "base_url", "repository", "technology", "uptodate",
    "net_device_id", "expire", "disk_space", "diks_inodes", "update",
    // option spellings, written as element names
    "automatic", "auto_download", "manual", "explorer", "custom", "no_proxy", "sunday", "monday",
    "tuesday", "wednesday", "thursday", "friday", "saturday", "hotfix", "servicepack", "version",
    // the core records' elements
    "id", "barrier", "limit", "interface", "class", "rate", "message", "clone_flags", "result", "log_level",
    "cpu_user", "cpu_system", "cpu_idle",
};

std::vector<MBQTagEntry> table() {
  std::size_t count = 0;
  const MBQTagEntry* entries = MBQ::tagTable(&count);
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

TEST(MBQTagTableTest, IdsAreAscendingAndPositive) {
  std::vector<MBQTagEntry> entries = table();
  ASSERT_FALSE(entries.empty());
  EXPECT_GT(entries.front().id, 0);
  for (std::size_t i = 1; i < entries.size(); ++i)
    EXPECT_LT(entries[i - 1].id, entries[i].id) << "at index " << i;
}

TEST(MBQTagTableTest, NamesAreUniqueLowerCaseXmlNames) {
  std::set<std::string> seen;
  for (const MBQTagEntry& entry : table()) {
    ASSERT_NE(nullptr, entry.name) << entry.id;
    EXPECT_TRUE(isXmlName(entry.name)) << entry.id << " " << entry.name;
    EXPECT_TRUE(seen.insert(entry.name).second) << "duplicate name " << entry.name;
  }
}

TEST(MBQTagTableTest, EveryEntryRoundTripsThroughBothLookUps) {
  for (const MBQTagEntry& entry : table()) {
    const char* name = tagName(entry.id);
    ASSERT_NE(nullptr, name) << entry.id;
    EXPECT_STREQ(entry.name, name);
    EXPECT_EQ(entry.id, tagId(name)) << name;
    // A copy of the text, not the table's own pointer, must find the id as well.
    EXPECT_EQ(entry.id, tagId(std::string(name).c_str())) << name;
  }
}

TEST(MBQTagTableTest, HoldsExactlyTheIdsTheLibraryUses) {
  std::set<int> used(std::begin(kUsedIds), std::end(kUsedIds));
  ASSERT_EQ(std::size(kUsedIds), used.size()) << "the list itself repeats an id";
  for (int id : kUsedIds) EXPECT_NE(nullptr, tagName(id)) << "missing id " << id;
  for (const MBQTagEntry& entry : table())
    EXPECT_EQ(1u, used.count(entry.id)) << "id " << entry.id << " is not used anywhere";
}

TEST(MBQTagTableTest, KeepsTheContainerConfigurationNames) {
  // The configuration's element order table addresses these tags by their names.
  const struct {
    int id;
    const char* name;
  } kFixed[] = {
      {1002, "veid"},         {1549, "ve_root"},          {1550, "ve_private"},
      {1556, "on_boot"},      {1226, "template"},         {1733, "os_template"},
      {1780, "distribution"}, {1786, "capability"},       {1463, "iptables"},
      {1747, "offline_service"}, {2053, "net_device"},    {1557, "rate_bound"},
      {1837, "slm_mode"},     {2291, "is_sample"},        {1859, "role"},
      {1647, "offline_management"},
      // shared ids with generic names
      {1010, "name"},         {1018, "value"},            {1007, "type"},
  };
  for (const auto& fixed : kFixed) {
    const char* name = tagName(fixed.id);
    ASSERT_NE(nullptr, name) << fixed.id;
    EXPECT_STREQ(fixed.name, name) << fixed.id;
  }
}

TEST(MBQTagTableTest, NoTagTakesANameUsedByString) {
  for (const char* name : kNamesUsedByString) EXPECT_EQ(0, tagId(name)) << name;
}

TEST(MBQTagTableTest, UnknownIdsAndNamesAreNotFound) {
  for (int id : {0, -1, 1, 1001, 1003, 1288, 2290, 2292, 99999})
    EXPECT_EQ(nullptr, tagName(id)) << id;
  EXPECT_EQ(0, tagId(nullptr));
  EXPECT_EQ(0, tagId(""));
  EXPECT_EQ(0, tagId("VEID"));  // look-up is case-sensitive
  EXPECT_EQ(0, tagId("veid "));
  EXPECT_EQ(0, tagId("vei"));
  EXPECT_EQ(0, tagId("zzz"));
  EXPECT_EQ(0, tagId("a"));
}

TEST(MBQTagTableTest, TableCountIsOptional) {
  std::size_t count = 0;
  const MBQTagEntry* withCount = MBQ::tagTable(&count);
  EXPECT_EQ(std::size(kUsedIds), count);
  EXPECT_EQ(withCount, MBQ::tagTable(nullptr));
}

TEST(MBQDefaultMapTest, MapsTheCoreNamespaceBothWays) {
  ASSERT_NE(nullptr, MBQDefaultMap::findNSID(292));
  EXPECT_STREQ(MBQ::kCoreTypesNamespace, MBQDefaultMap::findNSID(292));
  EXPECT_EQ(292, MBQDefaultMap::findNSByURI(MBQ::kCoreTypesNamespace));
  EXPECT_EQ(292, MBQDefaultMap::findNSByURI(std::string(MBQ::kCoreTypesNamespace).c_str()));

  for (int id : {0, -292, 1, 291, 293}) EXPECT_EQ(nullptr, MBQDefaultMap::findNSID(id)) << id;
  // The library's namespaces are written by URI only.
  for (const char* uri : {MBQ::kTypesNamespace, MBQ::kUpdateNamespace, MBQ::kRelocatorNamespace,
                          MBQ::kXsiNamespace, "", MBQ_NAMESPACE_HOST})
    EXPECT_EQ(0, MBQDefaultMap::findNSByURI(uri)) << uri;
  EXPECT_EQ(0, MBQDefaultMap::findNSByURI(nullptr));
}

TEST(MBQDefaultMapTest, MapsTheCoreTypeIds) {
  const struct {
    int id;
    const char* name;
  } kTypes[] = {
      {120, "env_configType"}, {121, "venv_configType"}, {122, "envType"},
      {151, "vt_infoType"},    {152, "vt_settingsType"}, {167, "net_nicType"},
  };
  for (const auto& type : kTypes) {
    ASSERT_NE(nullptr, MBQDefaultMap::findTypeID(type.id)) << type.id;
    EXPECT_STREQ(type.name, MBQDefaultMap::findTypeID(type.id)) << type.id;
  }
  for (int id : {0, 100, 119, 123, 150, 153, 166, 168, 292})
    EXPECT_EQ(nullptr, MBQDefaultMap::findTypeID(id)) << id;
}

}  // namespace
