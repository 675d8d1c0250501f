#pragma once

#include <string>

// The one place that fixes the namespace URIs of the agent's messages. Every URI shares the
// host below; only the path tells the vocabularies apart.
#define MBQ_NAMESPACE_HOST "http://www.srn-agent.org"

namespace MBQ {

// The core framework's own records, which writers name by a numeric id (see MBQDefaultMap).
constexpr const char* kCoreTypesNamespace = MBQ_NAMESPACE_HOST "/webservices/mbq/4.0.0/mbqtypes";
constexpr int kCoreTypesNamespaceId = 292;
// The container technology's records.
constexpr const char* kTypesNamespace = MBQ_NAMESPACE_HOST "/webservices/ktr/4.0.0/ktrtypes";
// Update service records.
constexpr const char* kUpdateNamespace = MBQ_NAMESPACE_HOST "/webservices/ktr/4.0.0/ktrup2date";
// Relocation (migration) records.
constexpr const char* kRelocatorNamespace = MBQ_NAMESPACE_HOST "/webservices/ktr/4.0.0/ktrrelocator";

// Schema types are written as xsi:type attributes.
constexpr const char* kXsiNamespace = "http://www.w3.org/2001/XMLSchema-instance";

// The prefix written messages declare for a URI, so that they read the same everywhere; nullptr
// for any other URI.
inline const char* conventionalPrefix(const std::string& uri) {
  if (uri == kTypesNamespace) return "ktr";
  if (uri == kUpdateNamespace) return "up";
  if (uri == kRelocatorNamespace) return "rel";
  if (uri == kCoreTypesNamespace) return "mbq";
  if (uri == kXsiNamespace) return "xsi";
  return nullptr;
}

}  // namespace MBQ
