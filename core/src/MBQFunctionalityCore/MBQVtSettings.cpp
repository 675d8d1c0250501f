#include "MBQFunctionalityCore/MBQVtSettings.h"

namespace MBQ {

MBQVtSettings::~MBQVtSettings() = default;

int MBQVtSettings::Reader::operator()(const MBQMessageIterator& it, MBQVtSettings& settings) const {
  return it.getValue("settings_version", settings.version_);
}

int MBQVtSettings::Writer::operator()(MBQMessageIterator& it, const MBQVtSettings& settings) const {
  return it.setValue("settings_version", settings.version_);
}

}  // namespace MBQ
