// Arbitrary bytes as a container's configuration file: read them with the built-in vocabulary,
// write the record merged into the same bytes as the old text, and read the output again.
// Nothing may crash, and writing into a string stream never fails. (A written file need not
// read back: new values are not escaped, so a value holding '"' leaves its quote open.)
#include <sstream>

#include "FuzzTarget.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRVocabulary.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const KTR::KTREnvConfigBashParserSP parser =
      KTR::KTREnvConfigBashParser::getInstance(KTR::defaultVocabulary());
  if (!parser) std::abort();
  const std::string text = inputText(data, size);

  KTR::KTREnvConfig config;
  std::istringstream in(text);
  parser->getConfig(in, config);

  std::istringstream old(text);
  std::ostringstream out;
  if (parser->putConfig(config, out, &old, true) != 0) std::abort();

  KTR::KTREnvConfig again;
  std::istringstream written(out.str());
  parser->getConfig(written, again);
  return 0;
}
