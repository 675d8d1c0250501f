#pragma once

#include <memory>
#include <string>
#include <vector>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// One schema document: the name other documents import or include it by, and its text.
struct MBQ_EXPORT MBQSchemaFile {
  std::string name;
  std::string text;
};

// One thing wrong with a message: the line of the element it concerns (0 when there is none)
// and what is wrong, on one line.
struct MBQ_EXPORT MBQSchemaProblem {
  int line;
  std::string text;
};

// A set of W3C XML Schema documents, compiled once, that messages are validated against.
// Documents refer to each other by name only (schemaLocation="mbqtypes.xsd"); nothing is read
// from the file system or the network while compiling, whatever a document asks for.
//
// A message's root element may carry any name: it is validated as the schema type its xsi:type
// names or, without one, as the type the caller names. Validation is thread-safe; compiling
// swaps libxml2's process-wide entity loader for its duration (see load()).
class MBQ_EXPORT MBQSchemaSet {
 public:
  ~MBQSchemaSet();
  MBQSchemaSet(const MBQSchemaSet&) = delete;
  MBQSchemaSet& operator=(const MBQSchemaSet&) = delete;

  // Compiles the documents. Every document that no other one includes is a namespace's entry
  // point. On failure returns nullptr and sets `error` to one line naming the document
  // ("ktrtypes.xsd:12: <what>"). Compiles run one at a time, and while one runs, libxml2 loads
  // external resources for no one else in the process.
  static std::unique_ptr<MBQSchemaSet> load(const std::vector<MBQSchemaFile>& files, std::string& error);
  // The same for every "*.xsd" file in `directory`.
  static std::unique_ptr<MBQSchemaSet> loadDirectory(const std::string& directory, std::string& error);

  // Validates the XML `text` (`name` is what problems about the text as a whole call it).
  // The root is taken as the type `typeName` in `typeNamespace` unless it declares its own
  // xsi:type; with neither, that is the one problem. Returns 0 when the message is valid, 1
  // with the problems in `problems` when it is not, and -1 with one problem when the text is
  // not a well-formed message.
  int validate(const std::string& text, const std::string& typeNamespace, const std::string& typeName,
               std::vector<MBQSchemaProblem>& problems) const;

 private:
  struct Compiled;
  explicit MBQSchemaSet(std::unique_ptr<Compiled> compiled);
  std::unique_ptr<Compiled> compiled_;
};

}  // namespace MBQ
