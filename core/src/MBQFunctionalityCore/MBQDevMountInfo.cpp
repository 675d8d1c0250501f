#include "MBQFunctionalityCore/MBQDevMountInfo.h"

#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

MBQDevMountInfo::MBQDevMountInfo() : fsType_("auto"), flags_(0), dump_(0), pass_(0) {}

MBQDevMountInfo::MBQDevMountInfo(const std::string& device, const std::string& mountPoint,
                                 const std::string& fsType, int flags, int dump, int pass)
    : device_(device), mountPoint_(mountPoint), fsType_(fsType), flags_(flags), dump_(dump), pass_(pass) {}

bool operator==(const MBQDevMountInfo& a, const MBQDevMountInfo& b) {
  return a.device_ == b.device_ && a.mountPoint_ == b.mountPoint_ && a.fsType_ == b.fsType_ &&
         a.flags_ == b.flags_ && a.dump_ == b.dump_ && a.pass_ == b.pass_;
}

// The optional parts, when present, must convert; when missing they keep a fresh record's defaults.
const MBQLayout<MBQDevMountInfo>& MBQDevMountInfo::layout() {
  using R = MBQDevMountInfo;
  static const MBQLayout<R> layout{required("device", &R::device_), required("mount_point", &R::mountPoint_),
                                   optional("fs_type", &R::fsType_),  optional("flags", &R::flags_),
                                   optional("dump", &R::dump_),       optional("pass", &R::pass_)};
  return layout;
}

}  // namespace MBQ
