#pragma once

// The default message codecs of the core value records: with this header included,
// getObj()/putObj() and the data-list readers and writers take MBQEID, MBQGUID, MBQIPv6 and
// MBQIPAddress like any scalar. Each value is the text of its own element:
//   MBQEID        the id as it is
//   MBQGUID       the bare 36-character form (no braces); an empty element reads as the empty
//                 GUID
//   MBQIPv6       the IPv6 text
//   MBQIPAddress  the address with its network part, as toStringWithNetwork() writes it
// A reader returns -1 when the element has no text form of the type (and leaves the value
// unchanged), except for MBQIPAddress, see below.
//
// Include this header wherever these types are read or written with their default codec:
// without it MBQDefaultCodec<T> has no Reader for them and the code does not compile.

#include <string>

#include "MBQCore/MBQEID.h"
#include "MBQCore/MBQGUID.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQCore/MBQIPv6.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

// The element's text through T::fromString; the value through T::toString.
template <class T>
struct MBQReaderTextT {
  int operator()(const MBQMessageIterator& it, T& value) const {
    std::string text;
    if (it.getText(text) != 0) return -1;
    return value.fromString(text) == 0 ? 0 : -1;
  }
};
template <class T>
struct MBQWriterTextT {
  int operator()(MBQMessageIterator& it, const T& value) const { return it.setText(value.toString()); }
};

// Address lists share their elements with words such as "dhcp" (a host-routed interface that
// takes its address from DHCP), so a non-blank text that is not an address still reads, as an
// invalid MBQIPAddress that keeps the text; callers test isValid(). Only an empty or blank
// element fails (-1): that is how an empty list is marked.
struct MBQReaderIPAddress {
  int operator()(const MBQMessageIterator& it, MBQIPAddress& value) const {
    std::string text;
    if (it.getText(text) != 0) return -1;
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) return -1;
    value = MBQIPAddress(text);
    return 0;
  }
};
struct MBQWriterIPAddress {
  int operator()(MBQMessageIterator& it, const MBQIPAddress& value) const {
    return it.setText(value.toStringWithNetwork());
  }
};

template <>
struct MBQDefaultCodec<MBQEID> {
  using Reader = MBQReaderTextT<MBQEID>;
  using Writer = MBQWriterTextT<MBQEID>;
};
template <>
struct MBQDefaultCodec<MBQGUID> {
  using Reader = MBQReaderTextT<MBQGUID>;
  using Writer = MBQWriterTextT<MBQGUID>;
};
template <>
struct MBQDefaultCodec<MBQIPv6> {
  using Reader = MBQReaderTextT<MBQIPv6>;
  using Writer = MBQWriterTextT<MBQIPv6>;
};
template <>
struct MBQDefaultCodec<MBQIPAddress> {
  using Reader = MBQReaderIPAddress;
  using Writer = MBQWriterIPAddress;
};

}  // namespace MBQ
