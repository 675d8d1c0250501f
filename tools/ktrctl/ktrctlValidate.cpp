#include "ktrctlValidate.h"

#include <cstdio>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvSampleM.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "ktrctlRead.h"

namespace ktrctl {

int validateCommand(const Options& options, const Args& args) {
  if (args.size() != 1) return fail("usage: ktrctl validate CONF");
  const std::string& path = args[0];
  if (!options.verbose) MBQ::Logger::setLevel(-1);
  Session session{options, nullptr, nullptr};
  if (int rc = openParser(options, session)) return rc;
  KTR::KTREnvConfig config;
  if (int rc = loadContainer(session, path, config)) return rc;
  std::vector<KTR::KTRQoSValidation> violations;
  const int rc = KTR::validateQoSes(&violations, session.vocabulary, config);
  if (rc == KTR::kSLMMemoryLimitMissing) {
    std::printf("SLMMODE is slm but SLMMEMORYLIMIT is not set\n");
    return kNegative;
  }
  // validateQoSes says "invalid vocabulary" for a configuration without resource values; here
  // the file is the one to blame.
  if (rc == KTR::kTuneFailed && MBQ::getErrorMessage() == "invalid vocabulary" && session.vocabulary)
    return fail(path + ": no resource values to validate");
  if (rc != 0) return fail(path + ": " + MBQ::getErrorMessage());
  for (const KTR::KTRQoSValidation& violation : violations) {
    std::string names;
    for (const std::string& name : violation.getNames()) names += (names.empty() ? "" : ",") + name;
    std::printf("%d: %s: %s: %s\n", violation.getId(), violation.getFormula().c_str(), names.c_str(),
                violation.getInfo().c_str());
  }
  return violations.empty() ? kOk : kNegative;
}

}  // namespace ktrctl
