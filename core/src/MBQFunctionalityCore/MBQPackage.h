#pragma once

#include <string>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQOptionalProperty.h"

namespace MBQ {

// A package or template the host node can install: its name and version, and the operating
// system it is built for. Technology libraries derive their template records from it and
// register them with the derived-parser factories of this base, so a package element is read
// into the class its schema type names.
//
// Together with a derived record's architecture, name, version, OS name and OS version
// identify one template on a node; the template cache builds its keys from them.
//
// Message layout, in the record's own element, in this order:
//   "key"     the name (text, required)
//   "release" the version (text, required)
//   "os_name"      the name of the operating system the package is for (optional property)
//   "os_version"   that operating system's version (optional property)
// A derived record reads and writes these elements first, in its own element.
class MBQ_EXPORT MBQPackage {
 public:
  MBQPackage() = default;
  MBQPackage(const std::string& name, const std::string& version) : name_(name), version_(version) {}
  MBQPackage(const MBQPackage&) = default;
  MBQPackage& operator=(const MBQPackage&) = default;
  virtual ~MBQPackage();

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  const std::string& getVersion() const { return version_; }
  void setVersion(const std::string& version) { version_ = version; }
  // For an OS template these describe the template itself; for an application template, the
  // OS template it applies to.
  const MBQOptionalProperty<std::string>& getOsName() const { return osName_; }
  void setOsName(const MBQOptionalProperty<std::string>& name) { osName_ = name; }
  const MBQOptionalProperty<std::string>& getOsVersion() const { return osVersion_; }
  void setOsVersion(const MBQOptionalProperty<std::string>& version) { osVersion_ = version; }

  friend bool operator==(const MBQPackage& a, const MBQPackage& b) {
    return a.name_ == b.name_ && a.version_ == b.version_ && a.osName_ == b.osName_ &&
           a.osVersion_ == b.osVersion_;
  }
  friend bool operator!=(const MBQPackage& a, const MBQPackage& b) { return !(a == b); }

  // Returns -1 when the name or the version is missing, and then leaves the record unchanged.
  // The OS properties become specified exactly when their elements are present.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQPackage& package) const;
  };
  // Writes the name, the version and the specified OS properties; -1 when the cursor refuses
  // an element. The writer declares no schema: only derived records are typed and registered,
  // and they write this part in place, inside their own typed element.
  struct MBQ_EXPORT Writer {
    int operator()(MBQMessageIterator& it, const MBQPackage& package) const;
  };

 private:
  std::string name_;
  std::string version_;
  MBQOptionalProperty<std::string> osName_;
  MBQOptionalProperty<std::string> osVersion_;
};

}  // namespace MBQ
