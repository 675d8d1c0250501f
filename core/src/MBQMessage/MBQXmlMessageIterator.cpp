// The message cursor over a libxml2 tree.
//
// Namespaces: a write namespace is applied to the elements created while it is in force. Its
// declaration is placed on the document's root element (or reused when an ancestor already
// declares the URI), so a message carries each namespace once however many records use it.
// Schema types are xsi:type attributes whose value is a QName resolved against the element's
// in-scope declarations, which is how readers recover "namespace URI:type name".

#include <libxml/tree.h>

#include <cstring>
#include <string>
#include <vector>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTagTable.h"
#include "MBQMessage/MBQXmlDocumentInternal.h"

namespace MBQ {

MBQChildOrder::~MBQChildOrder() = default;
MBQMessageIterator::~MBQMessageIterator() = default;

namespace {

constexpr const char* kPath = "core/src/MBQMessage/MBQXmlMessageIterator";

const xmlChar* X(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
const char* C(const xmlChar* text) { return reinterpret_cast<const char*>(text); }

// Tag ids are constants of the calling code; one that the table does not know is a bug.
const xmlChar* nameOfTag(int id) {
  const char* name = tagName(id);
  if (name == nullptr) {
    setErrorMessage("tag id %d is not in the tag table", id);
    MBQ::abort("MBQMessage", kPath, __LINE__, "nameOfTag");
  }
  return X(name);
}

bool isElement(xmlNodePtr node) { return node != nullptr && node->type == XML_ELEMENT_NODE; }

bool hasName(xmlNodePtr node, const xmlChar* name) {
  return isElement(node) && xmlStrEqual(node->name, name);
}

xmlNodePtr firstChildNamed(xmlNodePtr parent, const xmlChar* name) {
  for (xmlNodePtr child = parent->children; child != nullptr; child = child->next)
    if (hasName(child, name)) return child;
  return nullptr;
}

xmlNodePtr nextSiblingNamed(xmlNodePtr node, const xmlChar* name) {
  for (xmlNodePtr sibling = node->next; sibling != nullptr; sibling = sibling->next)
    if (hasName(sibling, name)) return sibling;
  return nullptr;
}

bool isText(xmlNodePtr node) {
  return node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE;
}

// The declaration of `uri` in scope at `node`, declared on the document root when none is.
xmlNsPtr ensureNamespace(xmlDocPtr doc, xmlNodePtr node, const std::string& uri) {
  if (uri.empty()) return nullptr;
  if (xmlNsPtr found = xmlSearchNsByHref(doc, node, X(uri.c_str()))) return found;
  xmlNodePtr root = xmlDocGetRootElement(doc);
  if (root == nullptr) root = node;
  std::string prefix;
  // Conventional prefixes keep written messages readable; any other URI gets "nsN".
  if (const char* preferred = conventionalPrefix(uri)) prefix = preferred;
  for (int n = 1; prefix.empty() || xmlSearchNs(doc, root, X(prefix.c_str())) != nullptr; ++n)
    prefix = "ns" + std::to_string(n);
  return xmlNewNs(root, X(uri.c_str()), X(prefix.c_str()));
}

// The namespace URI and local part of a QName-valued attribute, resolved at `node`; an empty URI
// when the QName has no prefix and no default namespace is in scope. An unbound prefix fails.
bool resolveQName(xmlDocPtr doc, xmlNodePtr node, const char* qname, std::string& uri, std::string& local) {
  const char* colon = std::strchr(qname, ':');
  std::string prefix = colon ? std::string(qname, colon) : std::string();
  local = colon ? colon + 1 : qname;
  xmlNsPtr ns = xmlSearchNs(doc, node, prefix.empty() ? nullptr : X(prefix.c_str()));
  if (ns == nullptr) {
    if (!prefix.empty()) return false;
    uri.clear();
    return true;
  }
  uri = C(ns->href);
  return true;
}

bool readSchemaTypeParts(xmlDocPtr doc, xmlNodePtr node, std::string& uri, std::string& local) {
  xmlChar* value = xmlGetNsProp(node, X("type"), X(kXsiNamespace));
  if (value == nullptr) return false;
  bool ok = resolveQName(doc, node, C(value), uri, local);
  xmlFree(value);
  return ok;
}

// "URI:local", or the local part alone for a type in no namespace.
bool readSchemaType(xmlDocPtr doc, xmlNodePtr node, std::string& type) {
  std::string uri, local;
  if (!readSchemaTypeParts(doc, node, uri, local)) return false;
  type = uri.empty() ? local : uri + ":" + local;
  return true;
}

void writeSchemaType(xmlDocPtr doc, xmlNodePtr node, const std::string& typeName, const std::string& uri) {
  std::string qname = typeName;
  if (!uri.empty()) {
    xmlNsPtr ns = ensureNamespace(doc, node, uri);
    if (ns->prefix != nullptr) qname = std::string(C(ns->prefix)) + ":" + typeName;
  }
  xmlNsPtr xsi = ensureNamespace(doc, node, kXsiNamespace);
  xmlSetNsProp(node, xsi, X("type"), X(qname.c_str()));
}

// After a deep copy, prefixes may differ from the source's, so QName-valued xsi:type attributes
// are rewritten from the source's expanded names (the two subtrees have the same shape).
void retargetSchemaTypes(xmlDocPtr sourceDoc, xmlNodePtr source, xmlDocPtr targetDoc, xmlNodePtr target) {
  std::string uri, local;
  if (readSchemaTypeParts(sourceDoc, source, uri, local)) writeSchemaType(targetDoc, target, local, uri);
  xmlNodePtr s = source->children;
  xmlNodePtr t = target->children;
  for (; s != nullptr && t != nullptr; s = s->next, t = t->next)
    if (isElement(s)) retargetSchemaTypes(sourceDoc, s, targetDoc, t);
}

// A deep copy carries its own namespace declarations on every copied subtree root. Moves every
// reference onto the declarations in scope at `anchor` (declaring on the root where needed) and
// drops the copies' own declarations, so an imported record does not repeat them.
void collectDeclarations(xmlNodePtr node, std::vector<xmlNsPtr>& dropped) {
  if (node->nsDef != nullptr) {
    dropped.push_back(node->nsDef);
    node->nsDef = nullptr;
  }
  for (xmlNodePtr child = node->children; child != nullptr; child = child->next)
    if (isElement(child)) collectDeclarations(child, dropped);
}

void remapNamespaces(xmlDocPtr doc, xmlNodePtr anchor, xmlNodePtr node) {
  if (node->ns != nullptr) node->ns = ensureNamespace(doc, anchor, C(node->ns->href));
  for (xmlAttrPtr attr = node->properties; attr != nullptr; attr = attr->next)
    if (attr->ns != nullptr) attr->ns = ensureNamespace(doc, anchor, C(attr->ns->href));
  for (xmlNodePtr child = node->children; child != nullptr; child = child->next)
    if (isElement(child)) remapNamespaces(doc, anchor, child);
}

void rehomeNamespaces(xmlDocPtr doc, xmlNodePtr anchor, xmlNodePtr copy) {
  std::vector<xmlNsPtr> dropped;
  collectDeclarations(copy, dropped);
  remapNamespaces(doc, anchor, copy);
  for (xmlNsPtr list : dropped) xmlFreeNsList(list);
}

class MBQXmlMessageIterator final : public MBQMessageIterator {
 public:
  MBQXmlMessageIterator(std::shared_ptr<MBQXmlDocument> doc, xmlNodePtr top)
      : doc_(std::move(doc)), top_(top), node_(top) {}

  int getText(std::string& text) const override {
    text.clear();
    for (xmlNodePtr child = node_->children; child != nullptr; child = child->next)
      if (isText(child) && child->content != nullptr) text += C(child->content);
    return 0;
  }

  int setText(const std::string& text) override {
    for (xmlNodePtr child = node_->children; child != nullptr;) {
      xmlNodePtr next = child->next;
      if (isText(child)) {
        xmlUnlinkNode(child);
        xmlFreeNode(child);
      }
      child = next;
    }
    if (!text.empty()) {
      xmlNodePtr textNode = xmlNewDocTextLen(doc(), X(text.c_str()), static_cast<int>(text.size()));
      if (textNode == nullptr) return -1;
      xmlAddChild(node_, textNode);
    }
    return 0;
  }

  std::string getName() const override { return C(node_->name); }

  bool isEmptyElement() const override {
    for (xmlNodePtr child = node_->children; child != nullptr; child = child->next) {
      if (isElement(child)) return false;
      if (isText(child) && child->content != nullptr && !xmlIsBlankNode(child)) return false;
    }
    return true;
  }

  int descend(int id) const override { return descendTo(nameOfTag(id)); }
  int descend(const std::string& name) const override { return descendTo(X(name.c_str())); }
  int next(int id) const override { return nextTo(nameOfTag(id)); }
  int next(const std::string& name) const override { return nextTo(X(name.c_str())); }

  int descendFirst() const override {
    for (xmlNodePtr child = node_->children; child != nullptr; child = child->next) {
      if (isElement(child)) {
        node_ = child;
        return 0;
      }
    }
    return -1;
  }
  int nextSibling() const override {
    if (node_ == top_) return -1;
    for (xmlNodePtr sibling = node_->next; sibling != nullptr; sibling = sibling->next) {
      if (isElement(sibling)) {
        node_ = sibling;
        return 0;
      }
    }
    return -1;
  }

  int up() const override {
    if (node_ == top_ || node_->parent == nullptr) return -1;
    node_ = node_->parent;
    return 0;
  }

  bool hasChild(int id) const override { return firstChildNamed(node_, nameOfTag(id)) != nullptr; }
  bool hasChild(const std::string& name) const override {
    return firstChildNamed(node_, X(name.c_str())) != nullptr;
  }

  int addChild(int id) override { return add(nameOfTag(id), false); }
  int addChild(const std::string& name) override { return add(X(name.c_str()), false); }
  int addChildAndDescend(int id) override { return add(nameOfTag(id), true); }
  int addChildAndDescend(const std::string& name) override { return add(X(name.c_str()), true); }

  int lookup(int id) const override { return lookupNamed(nameOfTag(id)); }
  int lookup(const std::string& name) const override { return lookupNamed(X(name.c_str())); }

  int remove() override {
    if (found_ == nullptr) return -1;
    // Removing the element the cursor stands in would leave it nowhere.
    for (xmlNodePtr n = node_; n != nullptr; n = n->parent)
      if (n == found_) return -1;
    xmlUnlinkNode(found_);
    xmlFreeNode(found_);
    found_ = nullptr;
    return 0;
  }

  int importChildren(const MBQMessageIterator& source) override {
    auto* from = dynamic_cast<const MBQXmlMessageIterator*>(&source);
    if (from == nullptr) return -1;
    // Copy first, then attach: importing a subtree into itself must not see its own copies.
    std::vector<std::pair<xmlNodePtr, xmlNodePtr>> copies;
    for (xmlNodePtr child = from->node_->children; child != nullptr; child = child->next) {
      if (!isElement(child)) continue;
      xmlNodePtr copy = xmlDocCopyNode(child, doc(), 1);
      if (copy == nullptr) {
        for (auto& made : copies) xmlFreeNode(made.second);
        return -1;
      }
      copies.emplace_back(child, copy);
    }
    for (auto& [original, copy] : copies) {
      rehomeNamespaces(doc(), node_, copy);
      xmlAddChild(node_, copy);
      retargetSchemaTypes(from->doc(), original, doc(), copy);
    }
    return 0;
  }

  int clearChildren() override {
    if (found_ != nullptr && found_->parent == node_) found_ = nullptr;
    for (xmlNodePtr child = node_->children; child != nullptr;) {
      xmlNodePtr next = child->next;
      xmlUnlinkNode(child);
      xmlFreeNode(child);
      child = next;
    }
    return 0;
  }

  int setNamespace(const std::string& uri) override {
    namespace_ = uri;
    return 0;
  }
  int setNamespace(int namespaceId) override {
    if (namespaceId == 0) {
      namespace_.clear();
      return 0;
    }
    const char* uri = MBQDefaultMap::findNSID(namespaceId);
    if (uri == nullptr) {
      setErrorMessage("unknown namespace id %d", namespaceId);
      return -1;
    }
    namespace_ = uri;
    return 0;
  }
  int setElementNamespace(int namespaceId) override {
    if (namespaceId == 0) {
      xmlSetNs(node_, nullptr);
      return 0;
    }
    const char* uri = MBQDefaultMap::findNSID(namespaceId);
    if (uri == nullptr) {
      setErrorMessage("unknown namespace id %d", namespaceId);
      return -1;
    }
    xmlSetNs(node_, ensureNamespace(doc(), node_, uri));
    return 0;
  }
  std::string getNamespace() const override { return namespace_; }

  int getSchemaType(std::string& type) const override {
    return readSchemaType(doc(), node_, type) ? 0 : -1;
  }
  int setSchemaType(int namespaceId, int typeId) override {
    const char* uri = namespaceId == 0 ? "" : MBQDefaultMap::findNSID(namespaceId);
    const char* typeName = MBQDefaultMap::findTypeID(typeId);
    if (uri == nullptr || typeName == nullptr) {
      setErrorMessage("unknown schema type %d:%d", namespaceId, typeId);
      return -1;
    }
    writeSchemaType(doc(), node_, typeName, uri);
    return 0;
  }
  int setSchemaType(const std::string& typeName, const std::string& namespaceUri) override {
    if (typeName.empty()) return -1;
    writeSchemaType(doc(), node_, typeName, namespaceUri);
    return 0;
  }

  void setChildOrder(const MBQChildOrder* order) override { order_ = order; }

  std::unique_ptr<MBQMessageIterator> clone() const override {
    return std::make_unique<MBQXmlMessageIterator>(doc_, node_);
  }

 private:
  xmlDocPtr doc() const { return doc_->get(); }

  int descendTo(const xmlChar* name) const {
    xmlNodePtr child = firstChildNamed(node_, name);
    if (child == nullptr) return -1;
    node_ = child;
    return 0;
  }

  int nextTo(const xmlChar* name) const {
    if (node_ == top_) return -1;
    xmlNodePtr sibling = nextSiblingNamed(node_, name);
    if (sibling == nullptr) return -1;
    node_ = sibling;
    return 0;
  }

  int lookupNamed(const xmlChar* name) const {
    found_ = firstChildNamed(node_, name);
    return found_ != nullptr ? 0 : -1;
  }

  int add(const xmlChar* name, bool descendInto) {
    xmlNsPtr ns = namespace_.empty() ? nullptr : ensureNamespace(doc(), node_, namespace_);
    xmlNodePtr child = xmlNewDocNode(doc(), ns, name, nullptr);
    if (child == nullptr) {
      setErrorMessage("out of memory adding element %s", C(name));
      return -1;
    }
    xmlNodePtr before = (order_ != nullptr && node_ == top_) ? orderedPlace(C(name)) : nullptr;
    if (before != nullptr)
      xmlAddPrevSibling(before, child);
    else
      xmlAddChild(node_, child);
    if (descendInto) node_ = child;
    return 0;
  }

  // Ranked children stand in rank order before every unranked one; a new ranked child goes
  // before the first sibling ranked after it (or unranked). Unranked children are appended.
  xmlNodePtr orderedPlace(const char* name) const {
    int rank = order_->getPositionOfTheTag(name);
    if (rank < 0) return nullptr;
    for (xmlNodePtr child = node_->children; child != nullptr; child = child->next) {
      if (!isElement(child)) continue;
      int other = order_->getPositionOfTheTag(C(child->name));
      if (other < 0 || other > rank) return child;
    }
    return nullptr;
  }

  std::shared_ptr<MBQXmlDocument> doc_;
  xmlNodePtr top_;
  mutable xmlNodePtr node_;
  mutable xmlNodePtr found_ = nullptr;
  std::string namespace_;
  const MBQChildOrder* order_ = nullptr;
};

}  // namespace

std::unique_ptr<MBQMessageIterator> makeXmlIterator(std::shared_ptr<MBQXmlDocument> doc, xmlNodePtr top) {
  return std::make_unique<MBQXmlMessageIterator>(std::move(doc), top);
}

}  // namespace MBQ
