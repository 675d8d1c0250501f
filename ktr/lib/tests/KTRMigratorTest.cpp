#include "KTRFunctionality/KTRMigrator.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "KTRRecordTesting.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// what their reader makes of a message, read into new options, is ktrctl's (msg-update.t).

namespace KTR {
namespace {

class KTRMigratorTest : public testing::RecordTest {};

TEST_F(KTRMigratorTest, CloneOptionsReadOverAnEarlierRecord) {
  KTRMigratorCloneOptions options;
  options.setFlag(true);
  options.setIds({"101", "7"});
  ASSERT_EQ(0, read(doc("<clone_flags>0</clone_flags>"), options));
  EXPECT_EQ(MBQ::MBQOptionalProperty<bool>(false), options.getFlag()) << "always assigned from the element's presence";
  ASSERT_EQ(0, read(doc("<clone_flags>1</clone_flags><veid>101</veid><veid>102</veid><veid>102</veid>"), options));
  EXPECT_EQ((std::set<std::string>{"101", "102", "7"}), options.getIds()) << "ids are added once";
}

}  // namespace
}  // namespace KTR
