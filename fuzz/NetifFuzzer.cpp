// Arbitrary bytes as one NETIF item: read it, write it, read the written text on a fresh
// record and write again. Reading never fails, and a written (non-empty) text must come back
// unchanged, whatever the first text made of the record.
#include "FuzzTarget.h"
#include "KTRFunctionality/KTRVEth.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  KTR::KTRNetVEth first;
  first.fromString(inputText(data, size));
  const std::string written = first.toString();
  KTR::KTRNetVEth second;
  second.fromString(written);
  // The empty text stands for the implicit host-routed venet0 and reads as a default record.
  if (!written.empty() && second.toString() != written) std::abort();
  return 0;
}
