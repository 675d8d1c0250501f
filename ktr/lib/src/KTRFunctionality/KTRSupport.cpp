#include "KTRFunctionality/KTRSupport.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

}  // namespace

int KTRProblemReportData::Reader::operator()(const MBQ::MBQMessageIterator& it, KTRProblemReportData& r) const {
  if (it.getValue(Tag::kKey, r.text1_) != 0) return -1;
  if (it.getValue(Tag::kReportText2, r.text2_) != 0) return -1;
  if (it.getValue(Tag::kReportText3, r.text3_) != 0) return -1;
  if (it.getValue(Tag::kReportText4, r.text4_) != 0) return -1;
  if (it.getValue(Tag::kReportText5, r.text5_) != 0) return -1;
  it.getObj(r.text6_, Tag::kReportText6);
  return 0;
}

int KTRProblemReportData::Writer::operator()(MBQ::MBQMessageIterator& it, const KTRProblemReportData& r) const {
  if (it.setValue(Tag::kKey, r.text1_) != 0) return -1;
  if (it.setValue(Tag::kReportText2, r.text2_) != 0) return -1;
  if (it.setValue(Tag::kReportText3, r.text3_) != 0) return -1;
  if (it.setValue(Tag::kReportText4, r.text4_) != 0) return -1;
  if (it.setValue(Tag::kReportText5, r.text5_) != 0) return -1;
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<std::string>>(), Tag::kReportText6)(it, r.text6_);
}

}  // namespace KTR
