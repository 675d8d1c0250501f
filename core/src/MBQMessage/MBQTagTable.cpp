#include "MBQMessage/MBQTagTable.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {

// Element names share one space with the names that records address by string ("ctid",
// "disk_list", "qoses", ...) and with the core records' own elements ("id", "limit", "rate",
// ...): the cursor finds a child by its name alone, so a tag named like one of those would
// read someone else's element. An id that several records use gets a name that fits every
// use. Where a record knows a field only by its position and no use hints at its meaning, the
// name says that position (conn_param2, report_text4) instead of guessing.
constexpr MBQTagEntry kTags[] = {
#define MBQ_TAG_ENTRY(id, name, element) {id, element},
    MBQ_TAGS(MBQ_TAG_ENTRY)
#undef MBQ_TAG_ENTRY
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
