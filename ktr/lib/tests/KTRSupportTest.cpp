#include "KTRFunctionality/KTRSupport.h"

#include <gtest/gtest.h>

#include <string>

#include "KTRRecordTesting.h"

namespace KTR {
namespace {

class KTRSupportTest : public testing::RecordTest {};

KTRProblemReportData report() {
  KTRProblemReportData r;
  r.setText1("1");
  r.setText2("2");
  r.setText3("3");
  r.setText4("4");
  r.setText5("5");
  return r;
}

TEST_F(KTRSupportTest, ProblemReportRoundTripsWithAndWithoutTheSixthText) {
  KTRProblemReportData r = report();
  KTRProblemReportData back;
  back.setText6(std::string("stale"));
  ASSERT_EQ(0, read(write(r), back));
  EXPECT_FALSE(back.getText6().isSpecified());
  EXPECT_EQ("5", back.getText5());
  r.setText6(std::string("6"));
  const std::string text = write(r);
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(std::string("6"), back.getText6().get());
  EXPECT_EQ(text, write(back));
}

TEST_F(KTRSupportTest, EachRequiredTextFailsTheReport) {
  const char* const required[] = {"key", "report_text2", "report_text3", "report_text4", "report_text5"};
  for (const char* missing : required) {
    std::string body;
    for (const char* name : required)
      if (std::string(name) != missing) body += std::string("<") + name + ">t</" + name + ">";
    KTRProblemReportData r;
    EXPECT_EQ(-1, read(doc(body + "<report_text6>6</report_text6>"), r)) << missing;
  }
}

}  // namespace
}  // namespace KTR
