#pragma once

// The DISK value of a container's configuration file: the container's image disks, each in
// HardDisk::Dromo's text form, joined by ";" without blanks (shown on two lines here):
//   DISK="image=/var/lib/quellix/private/101/disk.img,size=1048576,uuid={...};
//         image=/var/lib/quellix/private/101/data.img,size=2048,uuid={...}"
// Reading splits at every ";", drops blanks around items and skips empty items; it never fails
// on the text itself. Only image-disk (Dromo) lists have this form.

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRHardDisk.h"

namespace KTR {

class KTREnvConfig;

namespace Disk {

// The status of a disk list that has no DISK text form (file-system and loopback disks); the
// configuration writer passes it on as the parameter's status.
constexpr int kNoTextForm = 424;

// Parses `text` into an image-disk list and stores it with config.setHardDisks(), returning
// that call's status (an empty or blank value gives an empty list, which has no message form,
// so setHardDisks refuses it). `name` is the parameter's name, for messages only.
KTR_EXPORT int readDisks(const std::string& name, const std::string& text, KTREnvConfig& config);

// The configuration's disk list as DISK text. Without a disk list: getHardDisks()'s status and
// `out` unchanged; kNoTextForm (and `out` unchanged) for a list without a text form; else 0.
KTR_EXPORT int writeDisks(const std::string& name, const KTREnvConfig& config, std::string& out);

// The visitor behind writeDisks: collects a list's DISK text. visit() returns 0 for image-disk
// lists (an empty one gives empty text) and kNoTextForm, with empty text, for the other kinds.
class KTR_EXPORT Save : public HardDisk::List::Visitor {
 public:
  int visit(HardDisk::List::HqFS& list) override;
  int visit(HardDisk::List::Images<HardDisk::Dromo>& list) override;
  int visit(HardDisk::List::Images<HardDisk::Loopback>& list) override;
  const std::string& result() const { return text_; }

 private:
  std::string text_;
};

}  // namespace Disk
}  // namespace KTR
