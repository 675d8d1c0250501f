#pragma once

// The libxml2 side of messages, shared by the message and its cursors; not installed.

#include <libxml/tree.h>

#include <memory>

#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

// Owns one libxml2 document. Messages and cursors share it through shared_ptr, so the tree
// lives as long as anything still looks at it.
class MBQXmlDocument {
 public:
  explicit MBQXmlDocument(xmlDocPtr doc) : doc_(doc) {}
  ~MBQXmlDocument() { xmlFreeDoc(doc_); }
  MBQXmlDocument(const MBQXmlDocument&) = delete;
  MBQXmlDocument& operator=(const MBQXmlDocument&) = delete;

  xmlDocPtr get() const { return doc_; }

 private:
  xmlDocPtr doc_;
};

// A cursor over (a subtree of) a shared document, standing on `top`.
std::unique_ptr<MBQMessageIterator> makeXmlIterator(std::shared_ptr<MBQXmlDocument> doc, xmlNodePtr top);

}  // namespace MBQ
