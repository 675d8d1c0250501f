#include "MBQMessage/MBQMessage.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlsave.h>

#include <climits>
#include <string>

#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQXmlDocumentInternal.h"

namespace MBQ {

namespace {

const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }

std::shared_ptr<MBQXmlDocument> newDocument(const std::string& rootName) {
  xmlDocPtr doc = xmlNewDoc(X("1.0"));
  xmlNodePtr root = xmlNewDocNode(doc, nullptr, X(rootName.c_str()), nullptr);
  xmlDocSetRootElement(doc, root);
  return std::make_shared<MBQXmlDocument>(doc);
}

std::string trimmedMessage(const char* message) {
  std::string text = message ? message : "malformed XML";
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  return text;
}

}  // namespace

MBQMessage::MBQMessage(const std::string& rootName) : doc_(newDocument(rootName)) {}

MBQMessage::MBQMessage(const MBQMessage& other)
    : doc_(std::make_shared<MBQXmlDocument>(xmlCopyDoc(other.doc_->get(), 1))) {}

MBQMessage& MBQMessage::operator=(const MBQMessage& other) {
  if (this != &other) doc_ = std::make_shared<MBQXmlDocument>(xmlCopyDoc(other.doc_->get(), 1));
  return *this;
}

MBQMessage::MBQMessage(MBQMessage&&) noexcept = default;
MBQMessage& MBQMessage::operator=(MBQMessage&&) noexcept = default;
MBQMessage::~MBQMessage() = default;

int MBQMessage::parse(const char* data, std::size_t size) {
  if (size > static_cast<std::size_t>(INT_MAX)) {
    setErrorMessage("line 0, column 0: message of %zu bytes is too large", size);
    return -1;
  }
  xmlParserCtxtPtr context = xmlNewParserCtxt();
  if (context == nullptr) {
    setErrorMessage("line 0, column 0: out of memory");
    return -1;
  }
  // No network, no DTD loading, no entity substitution: messages are data, never instructions
  // to fetch or expand anything. Errors are collected in the context instead of printed.
  const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  xmlDocPtr doc = xmlCtxtReadMemory(context, data, static_cast<int>(size), nullptr, "UTF-8", options);
  // A document that uses an undeclared prefix is well-formed XML but not a usable message: its
  // element and type names cannot be resolved.
  if (doc == nullptr || xmlDocGetRootElement(doc) == nullptr || !context->nsWellFormed) {
    const xmlError* error = xmlCtxtGetLastError(context);
    if (error != nullptr)
      setErrorMessage("line %d, column %d: %s", error->line, error->int2, trimmedMessage(error->message).c_str());
    else
      setErrorMessage("line 0, column 0: document has no root element");
    if (doc != nullptr) xmlFreeDoc(doc);
    xmlFreeParserCtxt(context);
    return -1;
  }
  xmlFreeParserCtxt(context);
  doc_ = std::make_shared<MBQXmlDocument>(doc);
  return 0;
}

std::string MBQMessage::toString(bool pretty) const {
  xmlChar* buffer = nullptr;
  int length = 0;
  xmlDocDumpFormatMemoryEnc(doc_->get(), &buffer, &length, "UTF-8", pretty ? 1 : 0);
  std::string text;
  if (buffer != nullptr) {
    text.assign(reinterpret_cast<const char*>(buffer), static_cast<std::size_t>(length));
    xmlFree(buffer);
  }
  return text;
}

std::unique_ptr<MBQMessageIterator> MBQMessage::iterator() const {
  return makeXmlIterator(doc_, xmlDocGetRootElement(doc_->get()));
}

}  // namespace MBQ
