#include "MBQMessage/MBQSchemaSet.h"

#include <dirent.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <sstream>

#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

namespace {

constexpr const char* kXsdNamespace = "http://www.w3.org/2001/XMLSchema";
// The namespace of the one element the driver schema declares: a message's root is renamed to
// it for the time of a validation, whatever its own name, so that its type can come from
// xsi:type alone.
constexpr const char* kDriverNamespace = MBQ_NAMESPACE_HOST "/schema-set";
constexpr const char* kDriverElement = "message";

std::string trimmed(const char* text) {
  std::string out = text != nullptr ? text : "";
  while (!out.empty() && (out.back() == '\n' || out.back() == ' ')) out.pop_back();
  for (char& c : out)
    if (c == '\n') c = ' ';
  return out;
}

std::string attribute(xmlNodePtr node, const char* name) {
  xmlChar* value = xmlGetProp(node, reinterpret_cast<const xmlChar*>(name));
  std::string out = value != nullptr ? reinterpret_cast<const char*>(value) : "";
  xmlFree(value);
  return out;
}

bool isXsd(xmlNodePtr node, const char* name) {
  return node->type == XML_ELEMENT_NODE && node->ns != nullptr &&
         xmlStrEqual(node->ns->href, reinterpret_cast<const xmlChar*>(kXsdNamespace)) &&
         xmlStrEqual(node->name, reinterpret_cast<const xmlChar*>(name));
}

std::string baseName(const std::string& path) {
  const auto slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// What compiling needs to know of a document before libxml2 sees it.
struct Outline {
  std::string targetNamespace;
  std::vector<std::string> included;  // names it includes or redefines
};

bool outline(const MBQSchemaFile& file, Outline& out, std::string& error) {
  if (file.text.size() > static_cast<std::size_t>(INT_MAX)) {
    error = file.name + ": too large";
    return false;
  }
  xmlDocPtr doc = xmlReadMemory(file.text.data(), static_cast<int>(file.text.size()), file.name.c_str(), nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  xmlNodePtr root = doc != nullptr ? xmlDocGetRootElement(doc) : nullptr;
  if (root == nullptr || !isXsd(root, "schema")) {
    const xmlError* last = xmlGetLastError();
    error = file.name + ": not an XML Schema document" +
            (doc == nullptr && last != nullptr ? " (line " + std::to_string(last->line) + ": " + trimmed(last->message) + ")"
                                               : "");
    xmlFreeDoc(doc);
    return false;
  }
  out.targetNamespace = attribute(root, "targetNamespace");
  for (xmlNodePtr child = root->children; child != nullptr; child = child->next)
    if (isXsd(child, "include") || isXsd(child, "redefine"))
      out.included.push_back(baseName(attribute(child, "schemaLocation")));
  xmlFreeDoc(doc);
  return true;
}

// libxml2 resolves every schemaLocation through one process-wide loader. While a set compiles,
// the loader below answers from the set's own documents and refuses everything else.
std::mutex compileMutex;
const std::map<std::string, const MBQSchemaFile*>* compilingFiles = nullptr;
std::vector<std::string>* compilingMisses = nullptr;

xmlParserInputPtr loadFromSet(const char* url, const char*, xmlParserCtxtPtr context) {
  const std::string name = baseName(url != nullptr ? url : "");
  const auto found = compilingFiles->find(name);
  if (found == compilingFiles->end()) {
    compilingMisses->push_back(std::string(url != nullptr ? url : "(none)") + ": not a document of this schema set");
    return nullptr;
  }
  xmlParserInputPtr input = xmlNewStringInputStream(context, reinterpret_cast<const xmlChar*>(found->second->text.c_str()));
  if (input != nullptr) input->filename = reinterpret_cast<char*>(xmlStrdup(reinterpret_cast<const xmlChar*>(name.c_str())));
  return input;
}

void collect(void* sink, xmlErrorPtr error) {
  if (error == nullptr || error->level < XML_ERR_ERROR) return;
  const std::string where = error->file != nullptr ? baseName(error->file) : "schema";
  static_cast<std::vector<std::string>*>(sink)->push_back(where + ":" + std::to_string(error->line) + ": " +
                                                          trimmed(error->message));
}

struct ValidationSink {
  std::vector<MBQSchemaProblem>* problems;
  std::vector<std::pair<std::string, std::string>> braces;  // "{uri}" -> "prefix:"
  std::string driverName, rootName;
};

void collectProblem(void* sink, xmlErrorPtr error) {
  if (error == nullptr) return;
  auto& out = *static_cast<ValidationSink*>(sink);
  std::string text = trimmed(error->message);
  for (std::size_t at; (at = text.find(out.driverName)) != std::string::npos;)
    text.replace(at, out.driverName.size(), out.rootName);
  for (const auto& brace : out.braces)
    for (std::size_t at; (at = text.find(brace.first)) != std::string::npos;) text.replace(at, brace.first.size(), brace.second);
  out.problems->push_back({error->line, text});
}

// A prefix not yet bound at `node`: `wanted`, or it with a number.
const xmlChar* freePrefix(xmlDocPtr doc, xmlNodePtr node, const std::string& wanted, std::string& storage) {
  for (int n = 0;; ++n) {
    storage = n == 0 ? wanted : wanted + std::to_string(n);
    if (xmlSearchNs(doc, node, reinterpret_cast<const xmlChar*>(storage.c_str())) == nullptr)
      return reinterpret_cast<const xmlChar*>(storage.c_str());
  }
}

// A declaration of `uri` with a prefix, in scope at `node`.
xmlNsPtr prefixedNamespace(xmlDocPtr doc, xmlNodePtr node, const char* uri) {
  const char* conventional = conventionalPrefix(uri);
  const std::string wanted = conventional != nullptr ? conventional : "ns";
  xmlNsPtr ns = xmlSearchNsByHref(doc, node, reinterpret_cast<const xmlChar*>(uri));
  if (ns != nullptr && ns->prefix != nullptr) return ns;
  std::string prefix;
  return xmlNewNs(node, reinterpret_cast<const xmlChar*>(uri), freePrefix(doc, node, wanted, prefix));
}

}  // namespace

struct MBQSchemaSet::Compiled {
  xmlSchemaPtr schema = nullptr;
  ~Compiled() {
    if (schema != nullptr) xmlSchemaFree(schema);
  }
};

MBQSchemaSet::MBQSchemaSet(std::unique_ptr<Compiled> compiled) : compiled_(std::move(compiled)) {}
MBQSchemaSet::~MBQSchemaSet() = default;

std::unique_ptr<MBQSchemaSet> MBQSchemaSet::load(const std::vector<MBQSchemaFile>& files, std::string& error) {
  std::map<std::string, const MBQSchemaFile*> byName;
  std::map<std::string, Outline> outlines;
  std::set<std::string> included;
  for (const MBQSchemaFile& file : files) {
    if (!byName.emplace(file.name, &file).second) {
      error = file.name + ": given twice";
      return nullptr;
    }
    if (!outline(file, outlines[file.name], error)) return nullptr;
    included.insert(outlines[file.name].included.begin(), outlines[file.name].included.end());
  }
  // Each namespace is imported once, through the document that no other includes.
  std::map<std::string, std::string> entries;  // namespace -> document
  for (const auto& [name, shape] : outlines) {
    if (included.count(name) != 0) continue;
    if (!entries.emplace(shape.targetNamespace, name).second) {
      error = name + ": a second document for namespace \"" + shape.targetNamespace + "\" that no other includes";
      return nullptr;
    }
  }
  if (entries.empty()) {
    error = "no schema documents";
    return nullptr;
  }
  std::string driver = std::string("<xs:schema xmlns:xs=\"") + kXsdNamespace + "\" targetNamespace=\"" +
                       kDriverNamespace + "\">";
  for (const auto& [ns, name] : entries) {
    if (ns == kDriverNamespace || ns.empty()) {
      error = name + ": a schema set's documents need a target namespace of their own";
      return nullptr;
    }
    driver += "<xs:import namespace=\"" + ns + "\" schemaLocation=\"" + name + "\"/>";
  }
  driver += std::string("<xs:element name=\"") + kDriverElement + "\" type=\"xs:anyType\"/></xs:schema>";

  std::vector<std::string> errors, misses;
  auto compiled = std::make_unique<Compiled>();
  {
    std::lock_guard<std::mutex> lock(compileMutex);
    compilingFiles = &byName;
    compilingMisses = &misses;
    const xmlExternalEntityLoader previous = xmlGetExternalEntityLoader();
    xmlSetExternalEntityLoader(loadFromSet);
    xmlSchemaParserCtxtPtr context = xmlSchemaNewMemParserCtxt(driver.data(), static_cast<int>(driver.size()));
    if (context != nullptr) {
      xmlSchemaSetParserStructuredErrors(context, collect, &errors);
      compiled->schema = xmlSchemaParse(context);
      xmlSchemaFreeParserCtxt(context);
    }
    xmlSetExternalEntityLoader(previous);
    compilingFiles = nullptr;
    compilingMisses = nullptr;
  }
  if (!misses.empty() || !errors.empty() || compiled->schema == nullptr) {
    error = !misses.empty() ? misses.front() : !errors.empty() ? errors.front() : "the schemas do not compile";
    return nullptr;
  }
  return std::unique_ptr<MBQSchemaSet>(new MBQSchemaSet(std::move(compiled)));
}

std::unique_ptr<MBQSchemaSet> MBQSchemaSet::loadDirectory(const std::string& directory, std::string& error) {
  DIR* dir = ::opendir(directory.c_str());
  if (dir == nullptr) {
    error = directory + ": " + std::strerror(errno);
    return nullptr;
  }
  std::vector<std::string> names;
  while (const dirent* entry = ::readdir(dir)) {
    const std::string name = entry->d_name;
    if (name.size() > 4 && name[0] != '.' && name.compare(name.size() - 4, 4, ".xsd") == 0) names.push_back(name);
  }
  ::closedir(dir);
  std::sort(names.begin(), names.end());
  std::vector<MBQSchemaFile> files;
  for (const std::string& name : names) {
    std::ifstream in(directory + "/" + name, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in) {
      error = directory + "/" + name + ": cannot read";
      return nullptr;
    }
    files.push_back({name, text.str()});
  }
  if (files.empty()) {
    error = directory + ": no *.xsd files";
    return nullptr;
  }
  std::unique_ptr<MBQSchemaSet> set = load(files, error);
  if (set == nullptr) error = directory + "/" + error;
  return set;
}

int MBQSchemaSet::validate(const std::string& text, const std::string& typeNamespace, const std::string& typeName,
                           std::vector<MBQSchemaProblem>& problems) const {
  if (text.size() > static_cast<std::size_t>(INT_MAX)) {
    problems.push_back({0, "message too large"});
    return -1;
  }
  xmlParserCtxtPtr parser = xmlNewParserCtxt();
  if (parser == nullptr) {
    problems.push_back({0, "out of memory"});
    return -1;
  }
  xmlDocPtr doc = xmlCtxtReadMemory(parser, text.data(), static_cast<int>(text.size()), nullptr, "UTF-8",
                                    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  xmlNodePtr root = doc != nullptr ? xmlDocGetRootElement(doc) : nullptr;
  if (root == nullptr || !parser->nsWellFormed) {
    const xmlError* last = xmlCtxtGetLastError(parser);
    problems.push_back({last != nullptr ? last->line : 0,
                        "not a well-formed message: " + (last != nullptr ? trimmed(last->message) : "no root element")});
    xmlFreeDoc(doc);
    xmlFreeParserCtxt(parser);
    return -1;
  }
  xmlFreeParserCtxt(parser);

  ValidationSink sink;
  sink.problems = &problems;
  sink.rootName = root->ns != nullptr && root->ns->prefix != nullptr
                      ? std::string(reinterpret_cast<const char*>(root->ns->prefix)) + ":" +
                            reinterpret_cast<const char*>(root->name)
                      : reinterpret_cast<const char*>(root->name);
  sink.driverName = std::string("{") + kDriverNamespace + "}" + kDriverElement;
  if (xmlHasNsProp(root, reinterpret_cast<const xmlChar*>("type"), reinterpret_cast<const xmlChar*>(kXsiNamespace)) ==
      nullptr) {
    if (typeName.empty()) {
      problems.push_back({root->line, "the root element " + sink.rootName + " declares no schema type"});
      xmlFreeDoc(doc);
      return -1;
    }
    std::string value = typeName;
    if (!typeNamespace.empty())
      value = reinterpret_cast<const char*>(prefixedNamespace(doc, root, typeNamespace.c_str())->prefix) + (":" + value);
    xmlSetNsProp(root, prefixedNamespace(doc, root, kXsiNamespace), reinterpret_cast<const xmlChar*>("type"),
                 reinterpret_cast<const xmlChar*>(value.c_str()));
  }
  xmlNodeSetName(root, reinterpret_cast<const xmlChar*>(kDriverElement));
  std::string prefix;
  xmlSetNs(root, xmlNewNs(root, reinterpret_cast<const xmlChar*>(kDriverNamespace), freePrefix(doc, root, "v", prefix)));
  // Problems name elements and types "{uri}name"; the message's own prefixes read better.
  for (xmlNsPtr ns = root->nsDef; ns != nullptr; ns = ns->next)
    if (ns->prefix != nullptr && ns->href != nullptr && !xmlStrEqual(ns->href, root->ns->href))
      sink.braces.emplace_back(std::string("{") + reinterpret_cast<const char*>(ns->href) + "}",
                               std::string(reinterpret_cast<const char*>(ns->prefix)) + ":");

  xmlSchemaValidCtxtPtr context = xmlSchemaNewValidCtxt(compiled_->schema);
  int rc = -1;
  if (context != nullptr) {
    xmlSchemaSetValidStructuredErrors(context, collectProblem, &sink);
    rc = xmlSchemaValidateDoc(context, doc);
    xmlSchemaFreeValidCtxt(context);
  }
  xmlFreeDoc(doc);
  if (rc == 0) return 0;
  if (rc > 0 || !problems.empty()) {
    if (problems.empty()) problems.push_back({0, "not valid"});
    return 1;
  }
  problems.push_back({0, "validation could not run"});
  return -1;
}

}  // namespace MBQ
