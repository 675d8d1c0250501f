// A program built against an installed KTRFunctionality, as the agent's other components are:
// it reads a container's configuration file with the library's container file parser (and the
// library's built-in vocabulary) and prints the values of the keys asked for, one per line.
//
//   ktr-consumer CONF [KEY...]      the keys default to HOSTNAME
//   ktr-consumer --version          the loaded library's version
//
// Exit status 0 when every key has a value, 1 when one has none, 2 on an error.
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigFile.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "KTRFunctionality/KTRLibFunctionality.h"
#include "KTRFunctionality/KTRVocabulary.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "MBQCore/MBQString.h"

namespace {

int fail(const std::string& message) {
  std::fprintf(stderr, "ktr-consumer: %s\n", message.c_str());
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--version") {
    std::printf("libKTRFunctionality %s\n", KTR::ktrLibraryVersion());
    return 0;
  }
  if (argc < 2) return fail("usage: ktr-consumer CONF [KEY...] | --version");
  MBQ::Logger::setLevel(-1);  // the library's log lines would go to stderr

  const std::string path = argv[1];
  std::string text;
  if (KTR::readConfigFile(path, text) != 0) return fail(MBQ::getErrorMessage());
  const auto parser = KTR::KTREnvConfigBashParser::getInstance(KTR::defaultVocabulary());
  if (!parser) return fail(MBQ::getErrorMessage());
  KTR::KTREnvConfig config;
  std::istringstream in(text);
  if (parser->getConfig(in, config) != 0) return fail(path + ": " + MBQ::getErrorMessage());

  KTR::KTREnvConfigBashParser::ParameterParserGet get(config, parser->getQoSMap());
  std::vector<std::string> keys(argv + 2, argv + argc);
  if (keys.empty()) keys.emplace_back("HOSTNAME");
  int status = 0;
  for (const auto& key : keys) {
    std::string value;
    const int rc = get.get(MBQ::toLower(key), value);
    if (rc == KTR::kUnknownKey) return fail(path + ": unknown key " + key);
    if (rc == 0)
      std::printf("%s\n", value.c_str());
    else
      status = 1;
  }
  return status;
}
