#pragma once

// A container's storage: the three kinds of disk, the polymorphic list a container
// configuration keeps under "disk_list", and the visitor over that list.
//
// Message layout (tag ids of the tag table; children of the record's own element, written in
// this order; every schema type is in MBQ::kTypesNamespace):
//   HqFS      "ct_hqfs"           path (only when not empty), hqfs_quota first quota,
//                                 quota_setting second quota (MBQQoS layout each)
//   Dromo     "ct_dromo_disk"     name uuid (only when valid), path image, size and an
//                                 empty "expanded" (the last three only when the image is not
//                                 empty; "expanded" only when expanded is true)
//   Loopback  "ct_loopback_disk"  name uuid (only when valid), then the MBQDevMountInfo
//                                 children in the same element
//   List::HqFS, List::Images<T>   one disk_entry child per disk, with the list schema type of
//                                 the disk kind it holds
// The three lists are registered with the derived-parser registry of List::Base when the
// library loads, so a "disk_list" element reads back into the list class it was written from.

#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQGUID.h"
#include "MBQFunctionalityCore/MBQDevMountInfo.h"
#include "MBQFunctionalityCore/MBQQoS.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
class MBQMessageIterator;
}

namespace KTR {
namespace HardDisk {

// The schema part of the disk writers: types namespace, no numeric ids; each writer adds its
// getStrTypeID().
struct TypesSchema {
  const char* getStrNSID() const { return MBQ::kTypesNamespace; }
  int getNSID() const { return 0; }
  int getTypeID() const { return 0; }
};

// A container kept on the host's file system and limited by file-system quotas. The first
// quota limits disk space in 1 KiB blocks, the second the number of inodes; in each the
// barrier is the soft limit and the limit the hard one.
class KTR_EXPORT HqFS {
 public:
  HqFS() = default;
  // Path left empty.
  HqFS(const MBQ::MBQQoS& first, const MBQ::MBQQoS& second);

  // The directory the container lives in; empty when it does not exist yet.
  const std::string& path() const { return path_; }
  void setPath(const std::string& path) { path_ = path; }
  const MBQ::MBQQoS& first() const { return first_; }
  void setFirst(const MBQ::MBQQoS& quota) { first_ = quota; }
  const MBQ::MBQQoS& second() const { return second_; }
  void setSecond(const MBQ::MBQQoS& quota) { second_ = quota; }

  friend KTR_EXPORT bool operator==(const HqFS& a, const HqFS& b);
  friend bool operator!=(const HqFS& a, const HqFS& b) { return !(a == b); }

  // The reader takes what is there and always returns 0: a missing or unreadable child leaves
  // its field as it was. The writer returns the first quota's status when that fails, else
  // the second quota's.
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, HqFS& disk) const;
  };
  struct KTR_EXPORT Writer : TypesSchema {
    const char* getStrTypeID() const { return "ct_hqfs"; }
    int operator()(MBQ::MBQMessageIterator& it, const HqFS& disk) const;
  };

 private:
  std::string path_;
  MBQ::MBQQoS first_;
  MBQ::MBQQoS second_;
};

// An image-based disk: a disk image file mounted as the container's storage. `size` is in
// 1 KiB units; `expanded` tells a dynamically growing image from a preallocated one.
//
// Text form (one item of the DISK configuration value): "image=<image>,size=<size>,uuid={<uuid>}",
// the names always in this (byte) order; the image is written even when empty. The text does
// not carry `expanded`.
class KTR_EXPORT Dromo {
 public:
  // Expanded, no image, empty uuid, size 0.
  Dromo() = default;
  Dromo(long long size, bool expanded);

  bool expanded() const { return expanded_; }
  void setExpanded(bool expanded) { expanded_ = expanded; }
  const std::string& image() const { return image_; }
  void setImage(const std::string& image) { image_ = image; }
  const MBQ::MBQGUID& uuid() const { return uuid_; }
  void setUuid(const MBQ::MBQGUID& uuid) { uuid_ = uuid; }
  long long size() const { return size_; }
  void setSize(long long size) { size_ = size; }

  std::string toString() const;
  // Fills the record in place from its text form; never fails as a whole. Items are split at
  // ",", blanks around items are dropped and a value ends at its first blank; the first of
  // two items with one name counts. In order: "uuid" (absent: the empty GUID) must parse, or
  // nothing else changes; "size" is taken (absent or not a number: 0); "image" is taken only
  // when the size is above 0, else the image stays as it was. `expanded` is never changed.
  void fromString(const std::string& text);

  friend KTR_EXPORT bool operator==(const Dromo& a, const Dromo& b);
  friend bool operator!=(const Dromo& a, const Dromo& b) { return !(a == b); }

  // The reader always returns 0; a missing child leaves its field as it was, except that
  // `expanded` is set from the presence of "expanded" (absent: false, unlike the default).
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, Dromo& disk) const;
  };
  struct KTR_EXPORT Writer : TypesSchema {
    const char* getStrTypeID() const { return "ct_dromo_disk"; }
    int operator()(MBQ::MBQMessageIterator& it, const Dromo& disk) const;
  };

 private:
  bool expanded_ = true;
  std::string image_;
  MBQ::MBQGUID uuid_;
  long long size_ = 0;
};

// A disk mounted over a loop device.
class KTR_EXPORT Loopback {
 public:
  // Empty uuid; mount description with empty device and mount point, type "auto", zeros.
  Loopback();
  // Empty uuid.
  explicit Loopback(const MBQ::MBQDevMountInfo& mount);

  const MBQ::MBQGUID& uuid() const { return uuid_; }
  void setUuid(const MBQ::MBQGUID& uuid) { uuid_ = uuid; }
  const MBQ::MBQDevMountInfo& mount() const { return mount_; }
  void setMount(const MBQ::MBQDevMountInfo& mount) { mount_ = mount; }

  friend KTR_EXPORT bool operator==(const Loopback& a, const Loopback& b);
  friend bool operator!=(const Loopback& a, const Loopback& b) { return !(a == b); }

  // Both return the mount description's status (see MBQDevMountInfo); the uuid is optional.
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, Loopback& disk) const;
  };
  struct KTR_EXPORT Writer : TypesSchema {
    const char* getStrTypeID() const { return "ct_loopback_disk"; }
    int operator()(MBQ::MBQMessageIterator& it, const Loopback& disk) const;
  };

 private:
  MBQ::MBQGUID uuid_;
  MBQ::MBQDevMountInfo mount_;
};

namespace List {

class Visitor;

// A container's disk list; which kind of disk it holds is its class.
class KTR_EXPORT Base {
 public:
  virtual ~Base();
  // Calls the visitor's overload for this list's class and returns its result.
  virtual int accept(Visitor& visitor) = 0;
};

// The single disk of a container kept on the host's file system.
class KTR_EXPORT HqFS : public Base {
 public:
  HqFS() = default;
  explicit HqFS(const HardDisk::HqFS& disk) : disk_(disk) {}

  HardDisk::HqFS& disk() { return disk_; }
  const HardDisk::HqFS& disk() const { return disk_; }

  int accept(Visitor& visitor) override;

  // The disk under one disk_entry child, which the reader requires (-1 without it).
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, HqFS& list) const;
  };
  struct KTR_EXPORT Writer : TypesSchema {
    const char* getStrTypeID() const { return "ct_hqfs"; }
    int operator()(MBQ::MBQMessageIterator& it, const HqFS& list) const;
  };

 private:
  HardDisk::HqFS disk_;
};

// Image disks of one kind (T = HardDisk::Dromo or HardDisk::Loopback), in order.
template <class T>
class KTR_EXPORT Images : public Base {
 public:
  Images() = default;
  explicit Images(std::vector<T> disks) : disks_(std::move(disks)) {}

  std::vector<T>& disks() { return disks_; }
  const std::vector<T>& disks() const { return disks_; }

  int accept(Visitor& visitor) override;

  // One disk_entry child per disk. The writer refuses an empty list (-1, nothing written): an
  // empty list has no message form. The reader appends every child's disk and returns the
  // first disk reader's failure; an element without disks fails (-1).
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, Images& list) const;
  };
  // The list's schema type is its disk kind's.
  struct KTR_EXPORT Writer : TypesSchema {
    const char* getStrTypeID() const { return typename T::Writer().getStrTypeID(); }
    int operator()(MBQ::MBQMessageIterator& it, const Images& list) const;
  };

 private:
  std::vector<T> disks_;
};

// An operation over the kinds of disk list; each overload returns a status of the operation.
class KTR_EXPORT Visitor {
 public:
  virtual ~Visitor();
  virtual int visit(HqFS& list) = 0;
  virtual int visit(Images<Dromo>& list) = 0;
  virtual int visit(Images<Loopback>& list) = 0;
};

template <class T>
int Images<T>::accept(Visitor& visitor) {
  return visitor.visit(*this);
}

// Only these two exist; their members are compiled into the library.
extern template class KTR_EXPORT Images<Dromo>;
extern template class KTR_EXPORT Images<Loopback>;

}  // namespace List

// Whether the disk list a configuration holds now may be replaced by another: 0 when it may,
// 1 when it points at storage in use. An HqFS list is in use when its path is set, a loopback
// list when its first disk has a valid uuid; image-disk (Dromo) lists are always replaceable.
// An empty loopback list is a programming error (MBQ::abort): it cannot come from a message.
KTR_EXPORT int validateReplacement(const List::Base& current);

}  // namespace HardDisk
}  // namespace KTR
