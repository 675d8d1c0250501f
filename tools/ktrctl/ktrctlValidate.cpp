#include "ktrctlValidate.h"

#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvSampleM.h"
#include "MBQCore/MBQError.h"

namespace ktrctl {

int validateText(Session& session, const std::string& path, const std::string& text, std::vector<Finding>& findings) {
  KTR::KTREnvConfig config;
  if (int rc = readContainer(session, path, text, {}, config)) return rc;
  return validateConfig(session, path, config, findings);
}

int validateConfig(Session& session, const std::string& path, const KTR::KTREnvConfig& config,
                   std::vector<Finding>& findings) {
  std::vector<KTR::KTRQoSValidation> violations;
  const int rc = KTR::validateQoSes(&violations, session.vocabulary, config);
  if (rc == KTR::kSLMMemoryLimitMissing) {
    findings.push_back({"SLMMODE is slm but SLMMEMORYLIMIT is not set", {"slmmemorylimit"}});
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
    findings.push_back({std::to_string(violation.getId()) + ": " + violation.getFormula() + ": " + names + ": " +
                            violation.getInfo(),
                        violation.getNames()});
  }
  return findings.empty() ? kOk : kNegative;
}

}  // namespace ktrctl
