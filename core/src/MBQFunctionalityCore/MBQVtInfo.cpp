#include "MBQFunctionalityCore/MBQVtInfo.h"

namespace MBQ {

MBQVtInfo::~MBQVtInfo() = default;

int MBQVtInfo::Reader::operator()(const MBQMessageIterator& it, MBQVtInfo& info) const {
  std::string name;
  if (it.getValue("vt_name", name) != 0) return -1;
  std::string version;
  it.getValue("vt_version", version);
  info.name_ = name;
  info.version_ = version;
  return 0;
}

int MBQVtInfo::Writer::operator()(MBQMessageIterator& it, const MBQVtInfo& info) const {
  return it.setValue("vt_name", info.name_) || it.setValue("vt_version", info.version_) ? -1 : 0;
}

}  // namespace MBQ
