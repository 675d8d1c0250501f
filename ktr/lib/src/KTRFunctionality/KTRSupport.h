#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The support service's problem report.

namespace KTR {

// Layout: 1026, 1315, 1099, 1347, 1813 (texts, all required: the first missing one fails the
// reader with -1), 1632 (optional text, written only when specified).
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

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRProblemReportData& report) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRProblemReportData& report) const;
  };

 private:
  std::string text1_;
  std::string text2_;
  std::string text3_;
  std::string text4_;
  std::string text5_;
  MBQ::MBQOptionalProperty<std::string> text6_;
};

}  // namespace KTR
