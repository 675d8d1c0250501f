#pragma once

#include <string>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQLayout.h"

namespace MBQ {


// How a block device is mounted: the device (a node or an image path), where it is mounted,
// its file-system type, and the numbers an fstab line carries besides: the mount(2) flag bits,
// the dump flag and the fsck pass number.
class MBQ_EXPORT MBQDevMountInfo {
 public:
  // Empty device and mount point, file-system type "auto", flags, dump and pass 0.
  MBQDevMountInfo();
  MBQDevMountInfo(const std::string& device, const std::string& mountPoint, const std::string& fsType = "auto",
                  int flags = 0, int dump = 0, int pass = 0);

  const std::string& getDevice() const { return device_; }
  void setDevice(const std::string& device) { device_ = device; }
  const std::string& getMountPoint() const { return mountPoint_; }
  void setMountPoint(const std::string& mountPoint) { mountPoint_ = mountPoint; }
  const std::string& getFsType() const { return fsType_; }
  void setFsType(const std::string& fsType) { fsType_ = fsType; }
  // mount(2) flag bits (MS_RDONLY...), as the kernel takes them.
  int getFlags() const { return flags_; }
  void setFlags(int flags) { flags_ = flags; }
  // Non-zero when dump(8) should back the file system up.
  int getDump() const { return dump_; }
  void setDump(int dump) { dump_ = dump; }
  // The fsck(8) pass number; 0 means never checked.
  int getPass() const { return pass_; }
  void setPass(int pass) { pass_ = pass; }

  friend MBQ_EXPORT bool operator==(const MBQDevMountInfo& a, const MBQDevMountInfo& b);
  friend bool operator!=(const MBQDevMountInfo& a, const MBQDevMountInfo& b) { return !(a == b); }

  // Message layout, in the record's own element (records that embed a mount description share
  // their element with it): children "device", "mount_point", "fs_type" (texts), "flags",
  // "dump" and "pass" (decimal integers), written in this order, all of them always.
  // The reader requires "device" and "mount_point"; a missing "fs_type" reads as "auto" and a
  // missing number as 0. It returns -1, leaving the record unchanged, when a required child is
  // missing or a present number does not convert to int.
  static const MBQ::MBQLayout<MBQDevMountInfo>& layout();
  using Reader = MBQ::MBQFreshLayoutReader<MBQDevMountInfo>;
  using Writer = MBQ::MBQLayoutWriter<MBQDevMountInfo>;

 private:
  std::string device_;
  std::string mountPoint_;
  std::string fsType_;
  int flags_;
  int dump_;
  int pass_;
};

}  // namespace MBQ
