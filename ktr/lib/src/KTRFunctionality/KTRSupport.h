#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The support service's problem report.

namespace KTR {

// Five required texts (key, report_text2 to report_text5: the first missing one fails the read),
// then report_text6, optional and written only when specified.
class KTR_EXPORT KTRProblemReportData {
 public:
  const std::string& getText1() const { return text1_; }
  void setText1(const std::string& v) { text1_ = v; }
  const std::string& getText2() const { return text2_; }
  void setText2(const std::string& v) { text2_ = v; }
  const std::string& getText3() const { return text3_; }
  void setText3(const std::string& v) { text3_ = v; }
  const std::string& getText4() const { return text4_; }
  void setText4(const std::string& v) { text4_ = v; }
  const std::string& getText5() const { return text5_; }
  void setText5(const std::string& v) { text5_ = v; }
  const MBQ::MBQOptionalProperty<std::string>& getText6() const { return text6_; }
  void setText6(const MBQ::MBQOptionalProperty<std::string>& v) { text6_ = v; }

  static const MBQ::MBQLayout<KTRProblemReportData>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRProblemReportData>;
  using Writer = MBQ::MBQLayoutWriter<KTRProblemReportData>;

 private:
  std::string text1_;
  std::string text2_;
  std::string text3_;
  std::string text4_;
  std::string text5_;
  MBQ::MBQOptionalProperty<std::string> text6_;
};

}  // namespace KTR
