#pragma once

#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQSchemaSet.h"

// Every record this library reads from and writes to the agent's messages, by class name, for
// tools that check messages by hand and for fuzzing. Reading a record here never needs more
// than the element it stands in: each entry reads one element into a fresh record and writes
// the record back with its own writer.

namespace KTR {

// One child element of a record described by a layout.
struct KTR_EXPORT KTRRecordElement {
  std::string name;  // empty: the elements of a base class whose codec is written by hand
  bool required;     // the record does not read without it
  bool repeated;     // one child per item of a list
};

struct KTR_EXPORT KTRRecordType {
  // The class name, without "KTR::" ("KTRUpdate", "HardDisk::List::HqFS").
  std::string name;
  // The schema type the record's writer declares; empty for records written without one.
  std::string schema;
  // The writer's namespace URI; for a record without a schema type, the namespace of the
  // service family the record belongs to.
  std::string ns;
  // The type that describes the record in the published schemas, in `ns`: `schema` when the
  // writer declares one, otherwise a name of its own.
  std::string publishedType;

  // Reads `element` into a fresh record of this class with the class's reader and, when that
  // succeeds, writes the record into `out`, which becomes a new message whose root is named
  // like `element`. Returns 0; -1 with `readStatus` holding the reader's non-zero result when
  // reading fails (the thread's error text then names the element path and what was wrong,
  // "release: primary_flag: \"x\" is not a boolean ..."); -1 with `readStatus` 0 when writing
  // fails.
  int (*roundTrip)(const MBQ::MBQMessageIterator& element, MBQ::MBQMessage& out, int& readStatus) = nullptr;

  // The same, but the class is chosen by the schema type the element declares, through the
  // derived-parser registry of the record's base, and the record is written through the
  // registry again. Null for records that are not registered with a base.
  int (*roundTripDerived)(const MBQ::MBQMessageIterator& element, MBQ::MBQMessage& out, int& readStatus) = nullptr;

  // The record's children in order, from its layout; empty for a record whose reader and
  // writer are written by hand.
  std::vector<KTRRecordElement> elements;

  // "namespace URI:type", the form an element's declared type is looked up in; empty
  // without a schema type.
  std::string schemaName() const;
};

// All records, grouped by service family, in a fixed order.
KTR_EXPORT const std::vector<KTRRecordType>& recordTypes();
// The record with this class name, or nullptr.
KTR_EXPORT const KTRRecordType* findRecordType(const std::string& name);
// The record that is read for an element declaring this schema name ("namespace URI:type"),
// or nullptr. Registered records win over unregistered ones that share the type name (a
// single disk and the disk list holding it, for example).
KTR_EXPORT const KTRRecordType* findRecordTypeBySchema(const std::string& schemaName);

// The published schemas (share/KTRFunctionality/schema), as compiled into the library.
KTR_EXPORT std::vector<MBQ::MBQSchemaFile> recordSchemaFiles();
// Those schemas compiled, once per process; nullptr, with the reason in `error` when given,
// if they do not compile.
KTR_EXPORT const MBQ::MBQSchemaSet* recordSchemas(std::string* error = nullptr);

}  // namespace KTR
