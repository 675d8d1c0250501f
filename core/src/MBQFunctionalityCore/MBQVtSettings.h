#pragma once

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

// The virtualization layer's settings on a host node. The base record only carries the version
// of the settings format, so that a reader can tell an old layout from a new one; technology
// libraries derive the record that holds the settings themselves.
//
// Message layout, in the record's own element: "settings_version" (integer, required when
// reading). A derived writer writes it after its own elements, in the same element. Writer
// schema: core namespace (kCoreTypesNamespaceId), type 152.
class MBQ_EXPORT MBQVtSettings {
 public:
  MBQVtSettings() = default;
  explicit MBQVtSettings(int version) : version_(version) {}
  virtual ~MBQVtSettings();

  int getSettingsVersion() const { return version_; }
  void setSettingsVersion(int version) { version_ = version; }

  // Returns -1 when "settings_version" is missing or not a number, leaving the record unchanged.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQVtSettings& settings) const;
  };
  struct MBQ_EXPORT Writer {
    const char* getStrNSID() const { return ""; }
    const char* getStrTypeID() const { return ""; }
    int getNSID() const { return kCoreTypesNamespaceId; }
    int getTypeID() const { return 152; }
    int operator()(MBQMessageIterator& it, const MBQVtSettings& settings) const;
  };

 private:
  int version_ = 0;
};

}  // namespace MBQ
