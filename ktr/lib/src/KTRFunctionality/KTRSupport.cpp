#include "KTRFunctionality/KTRSupport.h"

namespace KTR {

namespace {

constexpr int kText1Tag = 1026;
constexpr int kText2Tag = 1315;
constexpr int kText3Tag = 1099;
constexpr int kText4Tag = 1347;
constexpr int kText5Tag = 1813;
constexpr int kText6Tag = 1632;

}  // namespace

int KTRProblemReportData::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRProblemReportData& r) const {
  if (it.getValue(kText1Tag, r.text1_) != 0) return -1;
  if (it.getValue(kText2Tag, r.text2_) != 0) return -1;
  if (it.getValue(kText3Tag, r.text3_) != 0) return -1;
  if (it.getValue(kText4Tag, r.text4_) != 0) return -1;
  if (it.getValue(kText5Tag, r.text5_) != 0) return -1;
  it.getObj(r.text6_, kText6Tag);
  return 0;
}

int KTRProblemReportData::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRProblemReportData& r) const {
  if (it.setValue(kText1Tag, r.text1_) != 0) return -1;
  if (it.setValue(kText2Tag, r.text2_) != 0) return -1;
  if (it.setValue(kText3Tag, r.text3_) != 0) return -1;
  if (it.setValue(kText4Tag, r.text4_) != 0) return -1;
  if (it.setValue(kText5Tag, r.text5_) != 0) return -1;
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<std::string>>(), kText6Tag)(it, r.text6_);
}

}  // namespace KTR
