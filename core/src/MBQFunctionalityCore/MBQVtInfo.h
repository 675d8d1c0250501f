#pragma once

#include <string>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

// What the host node says about its virtualization layer: the technology's name ("quellix")
// and its version text. Technology libraries derive their own record from it and register it
// with the derived-parser factories of this base.
//
// Message layout, in the record's own element: "vt_name" (required when reading) then
// "vt_version" (optional; missing reads as empty). A derived writer writes these elements
// after its own, in the same element. Writer schema: core namespace (kCoreTypesNamespaceId), type 151.
class MBQ_EXPORT MBQVtInfo {
 public:
  MBQVtInfo() = default;
  MBQVtInfo(const std::string& name, const std::string& version) : name_(name), version_(version) {}
  virtual ~MBQVtInfo();

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  const std::string& getVersion() const { return version_; }
  void setVersion(const std::string& version) { version_ = version; }

  // Returns -1 when "vt_name" is missing, leaving the record unchanged.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQVtInfo& info) const;
  };
  struct MBQ_EXPORT Writer {
    const char* getStrNSID() const { return ""; }
    const char* getStrTypeID() const { return ""; }
    int getNSID() const { return kCoreTypesNamespaceId; }
    int getTypeID() const { return 151; }
    int operator()(MBQMessageIterator& it, const MBQVtInfo& info) const;
  };

 private:
  std::string name_;
  std::string version_;
};

}  // namespace MBQ
