#include "MBQMessage/MBQTagTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

namespace {

// Element names share one space with the names that records address by string ("ctid",
// "disk_list", "qoses", ...) and with the core records' own elements ("id", "limit", "rate",
// ...): the cursor finds a child by its name alone, so a tag named like one of those would
// read someone else's element. An id that several records use gets a name that fits every
// use. Where a record knows a field only by its position and no use hints at its meaning, the
// name says that position (conn_param2, report_text4) instead of guessing.
constexpr MBQTagEntry kTags[] = {
    {1002, "veid"},                // container number; container ids listed in clone options
    {1004, "quota_extra"},         // fourth, 32-bit field of a disk quota
    {1007, "type"},                // kind or number: container type, type options, formula id
    {1010, "name"},                // name of a record, parameter or map key; disk uuid; user id
    {1012, "conn_param1"},         // first update connection setting
    {1017, "item"},                // one item of a text-to-text settings map
    {1018, "value"},               // value of a map item, capability or install source
    {1023, "update_param"},        // last field of an update entry
    {1024, "size"},                // size of an image disk or an update
    {1025, "conn_param2"},         // second update connection setting
    {1026, "key"},                 // identifying text: map key, template, package, script name
    {1032, "conn_param3"},         // third update connection setting
    {1034, "range_param"},         // third, text field of a shaped address range
    {1065, "usage"},               // current usage of a quota; value of a resource counter
    {1066, "soft_limit"},          // second 64-bit quota field, the soft limit
    {1067, "hard_limit"},          // third 64-bit quota field, the hard limit
    {1070, "bandwidth"},           // shaping rate of one network interface
    {1094, "shaping_class"},       // one traffic shaping class
    {1099, "report_text3"},        // third text of a problem report
    {1100, "service_settings"},    // update service schedule settings
    {1101, "conn_param5"},         // fifth setting of a direct update connection
    {1118, "package_flag"},        // flag of a package record
    {1152, "upgrade_flag"},        // marker of the single carried upgrade option bit
    {1156, "path"},                // a file path: disk image, file-system disk, excluded path
    {1185, "env_config"},          // container configuration carried by clone options
    {1189, "repo_flag"},           // flag of a yum repository
    {1223, "release"},             // package version entry; version of a template, update, vt info
    {1224, "note"},                // text of a hardware-node warning
    {1226, "template"},            // an application template of a container
    {1231, "quota_limit2"},        // second limit set of a user or group quota
    {1232, "quota_limit1"},        // first limit set of a user or group quota
    {1248, "shaping_flag"},        // flag of the network shaping configuration
    {1250, "iface_shaping"},       // shaping entry of one network interface
    {1251, "class_rate1"},         // first rate of a shaping class
    {1252, "class_rate2"},         // second rate of a shaping class
    {1253, "ip_range"},            // one shaped address range
    {1262, "host"},                // server-side address of a connection link
    {1264, "update_text1"},        // first own text of a system or management-product update
    {1274, "update_flag"},         // flag of an update entry
    {1275, "disk_entry"},          // one disk of a disk list
    {1276, "update_text2"},        // second own text of a system update
    {1278, "vt_text"},             // second text of the virtualization layer info
    {1281, "server_address"},      // server address handed out with a virtual NIC's addresses
    {1295, "package"},             // a template or package record, in lists, maps and the cache
    {1301, "quota_setting"},       // second quota of a file-system disk; first grace period
    {1302, "formula_info"},        // text that goes with a validation formula
    {1304, "complexity"},          // complexity of a resource parameter's value
    {1305, "redirect_flag"},       // flag of a redirect service
    {1307, "formula"},             // text of a validation formula
    {1315, "report_text2"},        // second text of a problem report
    {1323, "vt_item"},             // one entry of the virtualization layer info's text list
    {1328, "content"},             // native configuration text; script body
    {1338, "product_param"},       // last field of an updated product
    {1346, "exclude_path"},        // one path excluded from migration
    {1347, "report_text4"},        // fourth text of a problem report
    {1377, "ugid_limit"},          // one user or group quota limit
    {1405, "code"},                // code of a hardware-node warning
    {1417, "range_text"},          // first text of a shaped address range
    {1463, "iptables"},            // an iptables module enabled in a container
    {1476, "qos_value"},           // one resource value of the virtualization settings
    {1479, "parameter"},           // name of a parameter a violated formula read
    {1480, "warning"},             // violated formula text; a hardware-node warning
    {1481, "warning_info"},        // text that goes with a violated formula
    {1496, "detail"},              // supplementary text of updates, templates, packages, scripts
    {1497, "version_text"},        // version text of a package version
    {1498, "primary_flag"},        // first flag of a package version or standard template
    {1499, "secondary_flag"},      // second flag of a package version or template
    {1501, "config_text2"},        // second text of a template configuration
    {1502, "settings"},            // settings map of a template configuration
    {1509, "template_list"},       // templates of a package version
    {1511, "package_text"},        // one entry of a package's text list
    {1538, "ugid_limits"},         // user and group quota limits
    {1549, "ve_root"},             // container root path, may hold $VEID
    {1550, "ve_private"},          // container private area path, may hold $VEID
    {1556, "on_boot"},             // start the container at boot
    {1557, "rate_bound"},          // network rate bound flag
    {1573, "grace_periods"},       // grace periods of user and group quotas
    {1579, "quota"},               // third quota of the quota statistics
    {1582, "grace_period"},        // second grace period of user and group quotas
    {1586, "load_value"},          // own value of a container CPU load record
    {1632, "report_text6"},        // sixth, optional text of a problem report
    {1647, "offline_management"},  // offline management flag
    {1652, "eid"},                 // EID a redirect service points to
    {1704, "port"},                // port of a redirect service or connection link
    {1705, "service_flag"},        // flag of the update service settings
    {1733, "os_template"},         // OS template of a container; OS-template flag of a template
    {1747, "offline_service"},     // an offline service of a container
    {1780, "distribution"},        // distribution of a container
    {1786, "capability"},          // a capability of a container
    {1795, "conn_param4"},         // fourth setting of a direct update connection
    {1803, "install_source"},      // install source of an updated product
    {1811, "hqfs_quota"},          // first quota of a file-system disk
    {1813, "report_text5"},        // fifth text of a problem report
    {1818, "exclude_flag"},        // flag of an excluded path
    {1837, "slm_mode"},            // SLM mode of a container
    {1839, "install_type"},        // install type option of an updated product
    {1843, "conn_option"},         // optional value kept with the update connection
    {1846, "config_text4"},        // fourth text of a template configuration
    {1857, "clone_flag"},          // flag of clone options
    {1859, "role"},                // a server role of a container
    {1899, "eid_set"},             // ids of the containers that use a cached template
    {1992, "period"},              // update check period value
    {2005, "config_text5"},        // fifth text of a template configuration
    {2047, "address"},             // IP address of a shaped address range
    {2053, "net_device"},          // a virtual Ethernet device of a container
    {2291, "is_sample"},           // the container is a sample
};

constexpr std::size_t kTagCount = std::size(kTags);

constexpr bool idsStrictlyAscending() {
  for (std::size_t i = 1; i < kTagCount; ++i)
    if (kTags[i - 1].id >= kTags[i].id) return false;
  return true;
}
// The id look-up is a binary search; keeping the table ordered is checked here, not at run time.
static_assert(idsStrictlyAscending(), "tag ids must be unique and in ascending order");
static_assert(kTags[0].id > 0, "0 means no tag and must not be in the table");

bool nameLess(const MBQTagEntry* a, const MBQTagEntry* b) {
  return std::strcmp(a->name, b->name) < 0;
}

// Entries ordered by name, built on first use; C++ guarantees a single, race-free
// initialisation of a function-local static.
const std::array<const MBQTagEntry*, kTagCount>& byName() {
  static const std::array<const MBQTagEntry*, kTagCount> index = [] {
    std::array<const MBQTagEntry*, kTagCount> entries{};
    for (std::size_t i = 0; i < kTagCount; ++i) entries[i] = &kTags[i];
    std::sort(entries.begin(), entries.end(), nameLess);
    return entries;
  }();
  return index;
}

constexpr int kCoreTypesNamespaceId = 292;

}  // namespace

const char* tagName(int id) {
  const MBQTagEntry* end = kTags + kTagCount;
  const MBQTagEntry* found = std::lower_bound(
      kTags, end, id, [](const MBQTagEntry& entry, int key) { return entry.id < key; });
  return found != end && found->id == id ? found->name : nullptr;
}

int tagId(const char* name) {
  if (name == nullptr) return 0;
  const auto& index = byName();
  MBQTagEntry probe{0, name};
  auto found = std::lower_bound(index.begin(), index.end(), &probe, nameLess);
  return found != index.end() && std::strcmp((*found)->name, name) == 0 ? (*found)->id : 0;
}

const MBQTagEntry* tagTable(std::size_t* count) {
  if (count != nullptr) *count = kTagCount;
  return kTags;
}

const char* MBQDefaultMap::findNSID(int namespaceId) {
  return namespaceId == kCoreTypesNamespaceId ? kCoreTypesNamespace : nullptr;
}

const char* MBQDefaultMap::findTypeID(int typeId) {
  switch (typeId) {
    case 120: return "env_configType";   // MBQEnvConfig
    case 121: return "venv_configType";  // MBQVEnvConfig
    case 122: return "envType";          // MBQEnv
    case 151: return "vt_infoType";      // MBQVtInfo
    case 152: return "vt_settingsType";  // MBQVtSettings
    case 167: return "net_nicType";      // MBQNetNIC
    default: return nullptr;
  }
}

int MBQDefaultMap::findNSByURI(const char* uri) {
  // Only the core's own namespace has a numeric id; the library's namespaces are always
  // written by URI.
  if (uri != nullptr && std::strcmp(uri, kCoreTypesNamespace) == 0) return kCoreTypesNamespaceId;
  return 0;
}

}  // namespace MBQ
