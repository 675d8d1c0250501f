#pragma once

#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQQoS.h"
#include "MBQFunctionalityCore/MBQVocMap.h"
#include "MBQMessage/MBQOptionalProperty.h"

namespace KTR {

class KTREnvConfig;
class KTRBashParse;

// ---------------------------------------------------------------- resource values

namespace QoS {

// How a resource's value is written in a container's configuration file, as the vocabulary
// declares it for the resource ("qos" parameter elements "value_type" and complexity, tag
// complexity; a missing element keeps the default):
//   (2, 1)  "barrier:limit", or "limit" alone when there is no barrier   NUMPROC="240:260"
//   (1, 1)  one integer, the limit                                       CPUWEIGHT="500"
//   (1, 0)  a percentage, held in hundredths of a percent                CPULIMIT="12.5" (1250)
// Any other declaration has no file form.
struct Declaration {
  int valueType = 1;
  int complexity = 2;

  friend bool operator==(const Declaration& a, const Declaration& b) {
    return a.valueType == b.valueType && a.complexity == b.complexity;
  }
  friend bool operator!=(const Declaration& a, const Declaration& b) { return !(a == b); }
};

// The result of readValue / writeValue for a declaration that has no file form.
constexpr int kNoValueFormat = 1;

// Reads a value text into `qos` (its id is left alone). Numbers are read as the C library's
// scanf reads "%lld" and "%f": leading white space is skipped, reading stops at the first
// character that does not belong to the number, and a text without a number gives 0 (so
// reading never fails for a declared format). An integer beyond the 64-bit range saturates.
// Percentages are read in single precision, as the agent always has, then multiplied by 100
// and truncated toward zero: "12.5" gives 1250 but "0.29" gives 28 (0.29 is 0.28999999 as a
// float). A percentage beyond the 64-bit range saturates; "nan" gives 0.
// For (2, 1) a text with ":" sets the barrier (specified) from the part before it and the
// limit from the part after it; without ":" only the limit is set. The other formats set the
// limit only. Returns 0, or kNoValueFormat (qos unchanged).
KTR_EXPORT int readValue(const Declaration& declaration, const std::string& text, MBQ::MBQQoS& qos);

// The value text of `qos`: "barrier:limit" or "limit" for (2, 1), the limit for (1, 1), the
// limit / 100 as the shortest decimal that reads back for (1, 0) (1250 -> "12.5"). Returns 0,
// or kNoValueFormat (text unchanged).
KTR_EXPORT int writeValue(const Declaration& declaration, const MBQ::MBQQoS& qos, std::string& text);

}  // namespace QoS

// A resource known to the container file parser: its id (the lower-case vocabulary name, as
// MBQQoS records carry it), its file key (the upper-case name) and its value format.
struct QoSDefinition {
  std::string id;
  std::string key;
  QoS::Declaration declaration;
};

// ---------------------------------------------------------------- venet0

// Presents a container's host-routed addresses as an interface: appends to the record's
// interface list a host-routed interface "venet0" holding the record's addresses and name
// servers (empty name servers skipped), unless the list already has an interface named
// "venet0". When an address is the word "dhcp" the interface gets DHCP on and no addresses.
// The interface list becomes specified. Returns 0, or -1 with the error text
//   "can't get ip address list:<previous text>"
//   "can't get nameserver list:<previous text>"
//   "can't set VEth list: <previous text>"
// and the interface list unchanged.
KTR_EXPORT int createFakeVENet0Device(KTREnvConfig& config);

// ---------------------------------------------------------------- the parser

class KTREnvConfigBashParser;
using KTREnvConfigBashParserSP = std::shared_ptr<KTREnvConfigBashParser>;

// Reads a container's configuration file into a KTREnvConfig and writes one back into the
// file's text (line rules: KTRBashParser.h). The keys are
//   - a fixed table of 31 keys, each bound to a record property (the table and the value
//     forms are in KTREnvConfigBashParser.cpp; KEY="yes"/"no" booleans, space-separated lists,
//     NETIF items separated by ";" (KTRVEth.h), DISK (KTRDiskConverter.h)...);
//   - one key per resource of the vocabulary's "qos" category (the parser's resource map),
//     written in the resource's value format (QoS::readValue).
// Keys are matched without regard to case. Appended keys are written upper case, in this
// order: the first resource key, then the fixed keys in byte order, then the other resource
// keys. With an empty resource map nothing at all is appended.
//
// A parser holds only its resource map; it may be used for any number of reads and writes,
// and by several threads at once.
class KTR_EXPORT KTREnvConfigBashParser {
 public:
  using QoSMap = std::map<std::string, QoSDefinition>;
  using KeyTable = std::map<std::string, std::shared_ptr<KTRBashParse>>;
  using Changes = std::vector<std::pair<std::string, std::string>>;

  // A new parser whose resource map is read from `vocabulary` (each call reads it again).
  // Null when the vocabulary has no "qos" category: the failure is logged as
  // "can't initQoSMap : <error text>" and the error text says why.
  static KTREnvConfigBashParserSP getInstance(const MBQ::MBQVocMapSP& vocabulary);

  // The fixed key table, built when the library is loaded: lower-case key -> parser. Its first
  // entry is the empty key with a null parser, which stands for the end of the table in the
  // key order above and is never a file key.
  static const KeyTable& keyTable();

  // Refills the resource map from the vocabulary's "qos" category: one entry per parameter
  // with a name (parameters without one are skipped; of two names equal without regard to
  // case the first is kept). Returns 0, or -1 with the error text
  // "can't read qos category from vocabulary" when the vocabulary is null or the category is
  // missing or empty (the map is then empty).
  int initQoSMap(const MBQ::MBQVocMapSP& vocabulary);
  const QoSMap& getQoSMap() const { return qosMap_; }

  // Reads a file into `config` (without clearing it first). Afterwards the record's resource
  // list is specified (the file's resource keys, possibly none), its type is kTechnologyType,
  // and its interface list holds the host-routed "venet0" (createFakeVENet0Device). Returns 0,
  // or -1 when the file cannot be read to its end (KTRBashParser.h); the record may then be
  // partly filled.
  int getConfig(std::istream& in, KTREnvConfig& config) const;

  // Writes `config` merged with the old text of the file (`old` may be null; `merge` false
  // ignores it). The addresses written are those of the record's first host-routed interface
  // when it has one (updateIp). Returns serializeBashLikeConfig's result: 0, or -1 when the
  // output stream failed or the old text could not be read in full.
  int putConfig(const KTREnvConfig& config, std::ostream& out, std::istream* old, bool merge) const;

  // Appends to `changes` a (lower-case key, new value text) pair for every key whose value in
  // `newConfig` differs from that in `oldConfig`, in the key order above, both compared after
  // updateIp. Keys that `newConfig` leaves unspecified are not reported. With an empty
  // resource map nothing is reported. Returns 0.
  int diffConfig(const KTREnvConfig& oldConfig, const KTREnvConfig& newConfig, Changes& changes) const;

  // Replaces the record's address list with the addresses of its first host-routed interface
  // (specified, even when the interface has none); nothing changes without such an interface.
  // The name servers are left alone. Returns 0.
  static int updateIp(KTREnvConfig& config);

  // Put side of parseBashLikeConfig over a record. put() returns the key parser's result, or
  // kBadResourceValue for a resource whose declaration has no value format, or kUnknownKey.
  // Resources are collected rather than stored one by one; a resource given twice keeps the
  // later value, as bash would.
  class KTR_EXPORT ParameterParserPut {
   public:
    ParameterParserPut(KTREnvConfig& config, const QoSMap& qosMap);
    int put(const std::string& key, const char* value);
    const MBQ::MBQOptionalProperty<std::set<MBQ::MBQQoS>>& collected() const { return collected_; }

   private:
    KTREnvConfig& config_;
    const QoSMap& qosMap_;
    MBQ::MBQOptionalProperty<std::set<MBQ::MBQQoS>> collected_;
  };

  // Get side of serializeBashLikeConfig over a record that must outlive the parser unchanged.
  // get() returns 0, kKeyWithoutValue when the record holds no value for a known key (or the
  // key is "technologies", which is never written), or kUnknownKey. getNext() walks the keys
  // in the order above, then returns -1.
  class KTR_EXPORT ParameterParserGet {
   public:
    ParameterParserGet(const KTREnvConfig& config, const QoSMap& qosMap);
    int get(const std::string& key, std::string& value) const;
    int getNext(std::string& key);

   private:
    const KTREnvConfig& config_;
    const QoSMap& qosMap_;
    KeyTable::const_iterator nextFixed_;
    QoSMap::const_iterator nextResource_;
  };

  // The record type getConfig sets: the integer that stands for the technology "quellix" in
  // the configuration's type element.
  static constexpr int kTechnologyType = 1;

 private:
  KTREnvConfigBashParser() = default;

  QoSMap qosMap_;
};

}  // namespace KTR
