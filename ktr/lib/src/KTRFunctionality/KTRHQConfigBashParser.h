#pragma once

#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

class KTRVtSettings;
class KTRHQConfigBashParser;
using KTRHQConfigBashParserSP = std::shared_ptr<KTRHQConfigBashParser>;

// Reads the node's global configuration file into the node settings (KTRVtSettings) and writes
// them back. Every assignment is kept as a raw name-value pair in the settings map (lower-case
// names); only three keys are interpreted:
//   TEMPLATE         the template directory;
//   LOCKDIR          the lock directory;
//   OFFLINE_SERVICE  space-separated names of the redirect services that are switched on.
// The line rules are those of KTRBashParser.h. The parser holds no state: the one instance
// serves every thread.
class KTR_EXPORT KTRHQConfigBashParser {
 public:
  // The single instance, made when the library is loaded.
  static KTRHQConfigBashParserSP getInstance();

  // Reads `in` into `settings` (without clearing them first). Returns parseBashLikeConfig's
  // result.
  int getConfig(std::istream& in, KTRVtSettings& settings) const;

  // Writes `settings`, merged with the old text of the file. Keys are appended only after the
  // first raw key other than "lockdir" and "template": settings whose map holds no other key
  // append nothing at all, not even directories the old file lacks. Returns
  // serializeBashLikeConfig's result.
  int putConfig(const KTRVtSettings& settings, std::ostream& out, std::istream* old, bool merge) const;

  // Put side; put always returns 0.
  //   - (key, value) goes into the settings map unless the key is there already (the first
  //     assignment in the file wins);
  //   - "template" / "lockdir" set the template / lock directory, specified even when empty
  //     (the last assignment in the file wins);
  //   - "offline_service" sets the flag of every redirect service already in the settings'
  //     list exactly when the value names it (names are separated by single spaces); services
  //     are neither added nor removed.
  class KTR_EXPORT ParameterParserPut {
   public:
    explicit ParameterParserPut(KTRVtSettings& settings) : settings_(settings) {}
    int put(const std::string& key, const char* value);

   private:
    KTRVtSettings& settings_;
  };

  // Get side over source settings, which must outlive the parser and stay unchanged.
  //   get: "template" / "lockdir" give the directory, or kKeyWithoutValue when it is
  //   unspecified; "offline_service" appends the names of the flagged services in list order,
  //   a space before each one written after a non-empty text, or gives kKeyWithoutValue when
  //   the list is unspecified; any other key gives its settings-map value, or kUnknownKey.
  //   getNext: the first settings-map key other than "lockdir" and "template", then "lockdir"
  //   and "template", then the remaining such map keys in order; -1 at the end. When the map
  //   holds no such key the very first call gives -1.
  class KTR_EXPORT ParameterParserGet {
   public:
    explicit ParameterParserGet(const KTRVtSettings& settings);
    int get(const std::string& key, std::string& value) const;
    int getNext(std::string& key);

   private:
    const KTRVtSettings& settings_;
    std::set<std::string>::const_iterator nextInterpreted_;
    std::map<std::string, std::string>::const_iterator nextRaw_;
  };

 private:
  KTRHQConfigBashParser() = default;
};

}  // namespace KTR
