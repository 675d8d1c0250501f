// Arbitrary bytes as DISK text: once as one image-disk item, once as a whole ";" value.
// Reading never fails; what is written from the records must read back to the same records
// (the first read may lose things, for example the image of a disk without size, but the
// written text holds nothing that a second read could lose).
#include <iterator>
#include <vector>

#include "FuzzTarget.h"
#include "KTRFunctionality/KTRConverters.h"
#include "KTRFunctionality/KTRFormat.h"
#include "KTRFunctionality/KTRHardDisk.h"

using KTR::HardDisk::Dromo;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = inputText(data, size);

  Dromo first;
  first.fromString(text);
  Dromo second;
  second.fromString(first.toString());
  if (!(first == second)) std::abort();

  std::vector<Dromo> disks;
  if (KTR::Format::Load(text, ";", std::back_inserter(disks), KTR::FromStringConverter<Dromo>()) != 0) std::abort();
  std::string written;
  KTR::Format::Save(disks, ';', written, KTR::ToStringConverter<Dromo>());
  std::vector<Dromo> again;
  KTR::Format::Load(written, ";", std::back_inserter(again), KTR::FromStringConverter<Dromo>());
  if (again != disks) std::abort();
  return 0;
}
