#pragma once

// Parameter parsers: each binds one key of a container's configuration file to one property of
// the container configuration record, in both directions. The container file's key table
// (KTREnvConfigBashParser.cpp) is one line per key, made of the templates below:
//
//   KTRBashParseString<Record, Prop, &Record::setX, &Record::getX, InConv, OutConv>
//
// `Record` is the class that declares the accessors (KTREnvConfig, or one of its bases for the
// generic properties such as the host name); the parser always works on a KTREnvConfig.
// Converters are function objects: an in-converter turns a piece of value text into a value
// (`Prop operator()(const std::string&) const`), an out-converter a value into text
// (`std::string operator()(const Prop&) const`).
//
// The parsers hold no state and are shared by every thread.

#include <cctype>
#include <cstddef>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRConverters.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRFormat.h"
#include "KTRFunctionality/KTRTEM.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQOptionalProperty.h"

namespace KTR {

// One file key bound to one property of a container configuration.
class KTR_EXPORT KTRBashParse {
 public:
  virtual ~KTRBashParse();

  // Converts `value` (unquoted, possibly empty) and stores it in `config`. Returns the setter's
  // result (0, or -1 when the record refuses the value); a value that does not convert still
  // stores whatever its converter made of it. `key` is the lower-case file key.
  virtual int read(const std::string& key, const std::string& value, KTREnvConfig& config) const = 0;

  // Fills `value` with the property's text. Returns 0, or non-zero (value undefined) when there
  // is nothing to write: the property is unspecified or cannot be read.
  virtual int write(const std::string& key, const KTREnvConfig& config, std::string& value) const = 0;
};

// ---------------------------------------------------------------- converters

// Plain strings: the text is the value.
struct StringConverter {
  const std::string& operator()(const std::string& text) const { return text; }
};

// "yes" in any case is true; every other text ("no", "1", "true", "") is false. Written
// "yes" / "no".
namespace Bool {
struct FromString {
  bool operator()(const std::string& text) const { return MBQ::toLower(text) == "yes"; }
};
struct ToString {
  std::string operator()(bool value) const { return value ? "yes" : "no"; }
};
}  // namespace Bool

// The container's architecture: the file says "x86" (any case) where the record holds "i386";
// every other text passes unchanged both ways.
namespace Arch {
struct FromString {
  std::string operator()(const std::string& text) const { return MBQ::toLower(text) == "x86" ? "i386" : text; }
};
struct ToString {
  std::string operator()(const std::string& text) const { return MBQ::toLower(text) == "i386" ? "x86" : text; }
};
}  // namespace Arch

// Address list items. Built with the address's text constructor rather than fromString, so
// that words sharing an address list ("dhcp") are kept instead of dropped; written with their
// network part ("10.0.0.5/24"), as they were read.
struct AddressConverter {
  MBQ::MBQIPAddress operator()(const std::string& text) const { return MBQ::MBQIPAddress(text); }
  std::string operator()(const MBQ::MBQIPAddress& address) const { return address.toStringWithNetwork(); }
};

// ---------------------------------------------------------------- list helpers

// Separators of a list value: reading splits at every character of `line`, writing puts the
// first one between items.
struct spaceDelimiterProvider {
  static constexpr const char* line = " \t\n";
};
struct semicolonDelimiterProvider {
  static constexpr const char* line = ";";
};

// An output iterator that hands every value to the container's plain insert(value), for sets
// and maps, where std::insert_iterator's position hint has no use. Like std::set::insert, a
// value whose key is there already is dropped.
template <class Container>
class insert_iterator_simple {
 public:
  using iterator_category = std::output_iterator_tag;
  using value_type = void;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = void;
  using container_type = Container;

  explicit insert_iterator_simple(Container& container) : container_(&container) {}
  insert_iterator_simple& operator=(const typename Container::value_type& value) {
    container_->insert(value);
    return *this;
  }
  insert_iterator_simple& operator=(typename Container::value_type&& value) {
    container_->insert(std::move(value));
    return *this;
  }
  insert_iterator_simple& operator*() { return *this; }
  insert_iterator_simple& operator++() { return *this; }
  insert_iterator_simple& operator++(int) { return *this; }

 private:
  Container* container_;
};

// ---------------------------------------------------------------- parsers

// Any property with a text form. Reading stores InConv(value) as a specified property, also
// for an empty value. Writing gives OutConv(property); non-zero when it is unspecified.
template <class Record, class Prop, int (Record::*Setter)(const MBQ::MBQOptionalProperty<Prop>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<Prop>&) const, class InConv = StringConverter,
          class OutConv = StringConverter>
class KTRBashParseString : public KTRBashParse {
 public:
  int read(const std::string& /*key*/, const std::string& value, KTREnvConfig& config) const override {
    const MBQ::MBQOptionalProperty<Prop> property(static_cast<Prop>(InConv()(value)));
    return (static_cast<Record&>(config).*Setter)(property);
  }
  int write(const std::string& /*key*/, const KTREnvConfig& config, std::string& value) const override {
    MBQ::MBQOptionalProperty<Prop> property;
    (static_cast<const Record&>(config).*Getter)(property);
    if (!property.isSpecified()) return -1;
    value = OutConv()(property.get());
    return 0;
  }
};

// As KTRBashParseString, except that an empty value removes the property (stores it
// unspecified), so that KEY="" in a file means "not set". Writing returns the getter's code
// when it fails, -1 when the property is unspecified.
template <class Record, class Prop, int (Record::*Setter)(const MBQ::MBQOptionalProperty<Prop>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<Prop>&) const, class InConv = StringConverter,
          class OutConv = StringConverter>
class KTRBashParseStringNotEmpty : public KTRBashParse {
 public:
  int read(const std::string& /*key*/, const std::string& value, KTREnvConfig& config) const override {
    MBQ::MBQOptionalProperty<Prop> property(static_cast<Prop>(InConv()(value)));
    if (value.empty()) property.specify(false);
    return (static_cast<Record&>(config).*Setter)(property);
  }
  int write(const std::string& /*key*/, const KTREnvConfig& config, std::string& value) const override {
    MBQ::MBQOptionalProperty<Prop> property;
    const int rc = (static_cast<const Record&>(config).*Getter)(property);
    if (rc != 0) return rc;
    if (!property.isSpecified()) return -1;
    value = OutConv()(property.get());
    return 0;
  }
};

// A yes/no property (Bool converters).
template <class Record, int (Record::*Setter)(const MBQ::MBQOptionalProperty<bool>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<bool>&) const>
class KTRBashParseBool : public KTRBashParseString<Record, bool, Setter, Getter, Bool::FromString, Bool::ToString> {};

// A container property (vector, set or map) written as items separated by the delimiter's
// first character. Reading splits the value at every delimiter character, trims each piece,
// skips empty pieces and inserts InConv(piece) through `Inserter` (built on the container);
// the list is stored specified even when no item is left, so KEY="" means "an empty list".
// Writing joins the items' texts in container order (empty texts add nothing, not even a
// separator); non-zero when the getter fails or the list is unspecified.
template <class Record, class Prop, int (Record::*Setter)(const MBQ::MBQOptionalProperty<Prop>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<Prop>&) const, class Inserter, class InConv, class OutConv,
          class Delimiter>
class KTRBashParseGenericList : public KTRBashParse {
 public:
  int read(const std::string& /*key*/, const std::string& value, KTREnvConfig& config) const override {
    MBQ::MBQOptionalProperty<Prop> property;
    Format::Load(value, Delimiter::line, Inserter(property.get()), InConv());
    property.specify(true);
    return (static_cast<Record&>(config).*Setter)(property);
  }
  int write(const std::string& /*key*/, const KTREnvConfig& config, std::string& value) const override {
    MBQ::MBQOptionalProperty<Prop> property;
    if ((static_cast<const Record&>(config).*Getter)(property) != 0 || !property.isSpecified()) return -1;
    Format::Save(property.get(), Delimiter::line[0], value, OutConv());
    return 0;
  }
};

// A set of words separated by white space.
template <class Record, int (Record::*Setter)(const MBQ::MBQOptionalProperty<std::set<std::string>>&),
          int (Record::*Getter)(MBQ::MBQOptionalProperty<std::set<std::string>>&) const>
class KTRBashParseStringList
    : public KTRBashParseGenericList<Record, std::set<std::string>, Setter, Getter,
                                     insert_iterator_simple<std::set<std::string>>, StringConverter, StringConverter,
                                     spaceDelimiterProvider> {};

// The platform of the container's OS description ("linux"). Reading changes the platform only,
// keeping the description's name and version; writing fails when the description or its
// platform is unspecified.
class KTRBashParsePlatform : public KTRBashParse {
 public:
  int read(const std::string& /*key*/, const std::string& value, KTREnvConfig& config) const override {
    MBQ::MBQOptionalProperty<MBQ::MBQOsDescription> os;
    config.getOsDescription(os);
    if (!os.isSpecified()) os.get() = MBQ::MBQOsDescription();
    os.get().platform = value;
    os.specify(true);
    return config.setOsDescription(os);
  }
  int write(const std::string& /*key*/, const KTREnvConfig& config, std::string& value) const override {
    MBQ::MBQOptionalProperty<MBQ::MBQOsDescription> os;
    if (config.getOsDescription(os) != 0 || !os.isSpecified() || !os.get().platform.isSpecified()) return -1;
    value = os.get().platform.get();
    return 0;
  }
};

// The technology list of a container ("hqfs x86_64 ..."): read only. The first word that the
// architecture selector supports becomes the architecture, through the Arch converter ("x86"
// is stored as "i386"), and the setter's result is returned; with no such word nothing is
// stored and the result is 0. Writing always fails: the list itself is never written back.
namespace Technologies {
template <class Record, int (Record::*Setter)(const MBQ::MBQOptionalProperty<std::string>&)>
class Parser : public KTRBashParse {
 public:
  int read(const std::string& /*key*/, const std::string& value, KTREnvConfig& config) const override {
    const KTRArchitectureSelector isSupported;
    std::size_t begin = 0;
    while (begin < value.size()) {
      while (begin < value.size() && isBlank(value[begin])) ++begin;
      std::size_t end = begin;
      while (end < value.size() && !isBlank(value[end])) ++end;
      const std::string word = value.substr(begin, end - begin);
      if (!word.empty() && isSupported(word)) {
        return (static_cast<Record&>(config).*Setter)(MBQ::MBQOptionalProperty<std::string>(Arch::FromString()(word)));
      }
      begin = end;
    }
    return 0;
  }
  int write(const std::string& /*key*/, const KTREnvConfig& /*config*/, std::string& /*value*/) const override {
    return -1;
  }

 private:
  static bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
};
}  // namespace Technologies

}  // namespace KTR
