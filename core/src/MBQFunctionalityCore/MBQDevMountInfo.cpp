#include "MBQFunctionalityCore/MBQDevMountInfo.h"

#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

namespace {

// A required child, or an optional one (absent keeps the default, present must convert).
template <class T>
int readChild(const MBQMessageIterator& it, const char* name, bool required, T& value) {
  if (!required && !it.hasChild(name)) return 0;
  if (it.getValue(name, value) == 0) return 0;
  setErrorMessage("mount description: '%s' is missing or does not convert", name);
  return -1;
}

}  // namespace

MBQDevMountInfo::MBQDevMountInfo() : fsType_("auto"), flags_(0), dump_(0), pass_(0) {}

MBQDevMountInfo::MBQDevMountInfo(const std::string& device, const std::string& mountPoint,
                                 const std::string& fsType, int flags, int dump, int pass)
    : device_(device), mountPoint_(mountPoint), fsType_(fsType), flags_(flags), dump_(dump), pass_(pass) {}

bool operator==(const MBQDevMountInfo& a, const MBQDevMountInfo& b) {
  return a.device_ == b.device_ && a.mountPoint_ == b.mountPoint_ && a.fsType_ == b.fsType_ &&
         a.flags_ == b.flags_ && a.dump_ == b.dump_ && a.pass_ == b.pass_;
}

int MBQDevMountInfo::Reader::operator()(const MBQMessageIterator& it, MBQDevMountInfo& info) const {
  MBQDevMountInfo read;
  if (readChild(it, "device", true, read.device_) != 0 || readChild(it, "mount_point", true, read.mountPoint_) != 0 ||
      readChild(it, "fs_type", false, read.fsType_) != 0 || readChild(it, "flags", false, read.flags_) != 0 ||
      readChild(it, "dump", false, read.dump_) != 0 || readChild(it, "pass", false, read.pass_) != 0)
    return -1;
  info = read;
  return 0;
}

int MBQDevMountInfo::Writer::operator()(MBQMessageIterator& it, const MBQDevMountInfo& info) const {
  if (it.setValue("device", info.device_) != 0 || it.setValue("mount_point", info.mountPoint_) != 0 ||
      it.setValue("fs_type", info.fsType_) != 0 || it.setValue("flags", info.flags_) != 0 ||
      it.setValue("dump", info.dump_) != 0)
    return -1;
  return it.setValue("pass", info.pass_);
}

}  // namespace MBQ
