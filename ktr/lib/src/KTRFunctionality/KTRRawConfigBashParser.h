#pragma once

#include <istream>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

class KTRRawConfigBashParser;
using KTRRawConfigBashParserSP = std::shared_ptr<KTRRawConfigBashParser>;

// Reads any bash-like configuration file into a map of names to values and writes such a map
// back, interpreting no key. Names are kept lower case; the line rules are those of
// KTRBashParser.h. The parser holds no state: the one instance serves every thread.
class KTR_EXPORT KTRRawConfigBashParser {
 public:
  // The single instance, made when the library is loaded.
  static KTRRawConfigBashParserSP getInstance();

  // Adds every assignment of `in` to `config`. A name already in the map keeps its value, so
  // the first assignment of a key in the file wins. Returns parseBashLikeConfig's result.
  int getConfig(std::istream& in, std::map<std::string, std::string>& config) const;

  // Writes `config`: every line of `old` whose key the map holds gets the map's value (all of
  // them when a key is assigned several times), every other line stays as it was, and the
  // remaining keys are appended upper case in the map's order. With `merge` false or no old
  // text, only the appended lines are written. Returns serializeBashLikeConfig's result.
  int putConfig(const std::map<std::string, std::string>& config, std::ostream& out, std::istream* old,
                bool merge) const;

  // Put side: fills the target map; put always returns 0.
  class KTR_EXPORT ParameterParserPut {
   public:
    explicit ParameterParserPut(std::map<std::string, std::string>& config) : config_(config) {}
    int put(const std::string& key, const char* value);

   private:
    std::map<std::string, std::string>& config_;
  };

  // Get side over a source map: get answers kUnknownKey for a name the map lacks; getNext
  // walks the map's names in order. The map must outlive the parser and stay unchanged.
  class KTR_EXPORT ParameterParserGet {
   public:
    explicit ParameterParserGet(const std::map<std::string, std::string>& config)
        : config_(config), next_(config.begin()) {}
    int get(const std::string& key, std::string& value) const;
    int getNext(std::string& key);

   private:
    const std::map<std::string, std::string>& config_;
    std::map<std::string, std::string>::const_iterator next_;
  };

 private:
  KTRRawConfigBashParser() = default;
};

}  // namespace KTR
