#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

class MBQXmlDocument;

// A message: one XML document. A new message holds only its root element; records are written
// into it through cursors and the whole tree is serialised to XML text. Copies are deep.
// Cursors keep the document alive, so a cursor may outlive the message it came from.
class MBQ_EXPORT MBQMessage {
 public:
  // A message whose root element has the given name (no namespace).
  explicit MBQMessage(const std::string& rootName = "message");
  MBQMessage(const MBQMessage& other);
  MBQMessage& operator=(const MBQMessage& other);
  MBQMessage(MBQMessage&&) noexcept;
  MBQMessage& operator=(MBQMessage&&) noexcept;
  ~MBQMessage();

  // Replaces the document with the parsed text. On failure returns -1, leaves the message as
  // it was and sets the error text to "line L, column C: <what>". No network access, no
  // external entities, and libxml2's limits on depth and expansion apply.
  int parse(const char* data, std::size_t size);
  int parse(const std::string& text) { return parse(text.data(), text.size()); }

  // The document as XML text (UTF-8, with the XML declaration); `pretty` indents it.
  std::string toString(bool pretty = false) const;

  // A cursor standing on the root element.
  std::unique_ptr<MBQMessageIterator> iterator() const;

 private:
  std::shared_ptr<MBQXmlDocument> doc_;
};

}  // namespace MBQ
