#include "KTRFunctionality/KTRSupport.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

const MBQ::MBQLayout<KTRProblemReportData>& KTRProblemReportData::layout() {
  using R = KTRProblemReportData;
  using MBQ::required;
  static const MBQ::MBQLayout<R> layout{required(Tag::kKey, &R::text1_),         required(Tag::kReportText2, &R::text2_),
                                        required(Tag::kReportText3, &R::text3_), required(Tag::kReportText4, &R::text4_),
                                        required(Tag::kReportText5, &R::text5_), MBQ::optional(Tag::kReportText6, &R::text6_)};
  return layout;
}

}  // namespace KTR
