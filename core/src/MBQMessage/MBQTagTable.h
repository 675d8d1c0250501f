#pragma once

#include <cstddef>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// The tag table: every numeric element id the agent's messages use, with its element name.
// Names are lower-case and unique; ids are unique. Ids are compile-time constants of the code
// that uses them, so an id missing from the table is a programming error (see the cursor).
struct MBQTagEntry {
  int id;
  const char* name;
};

// Element name of a tag id, or nullptr when the id is not in the table (0 never is).
MBQ_EXPORT const char* tagName(int id);
// Tag id of an element name, or 0 when no id has that name.
MBQ_EXPORT int tagId(const char* name);
// The whole table, ordered by id.
MBQ_EXPORT const MBQTagEntry* tagTable(std::size_t* count);

// The default map of the core's numeric schema ids to texts: namespace ids to URIs and type
// ids to type names. A missing id yields nullptr.
class MBQ_EXPORT MBQDefaultMap {
 public:
  static const char* findNSID(int namespaceId);
  static const char* findTypeID(int typeId);
  // Reverse look-up of a namespace URI; 0 when the URI has no numeric id.
  static int findNSByURI(const char* uri);
};

}  // namespace MBQ
