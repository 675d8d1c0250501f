#include "KTRFunctionality/KTRMigrator.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <typeinfo>

#include "KTRRecordTesting.h"
#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {
namespace {

class KTRMigratorTest : public testing::RecordTest {};

using Ids = std::set<std::string>;

TEST_F(KTRMigratorTest, CloneOptionsWithoutConfigurationGetAnEmptyOne) {
  KTRMigratorCloneOptions options;
  options.setFlag(true);
  ASSERT_EQ(0, read(doc("<clone_flags>0</clone_flags>"), options));
  EXPECT_NE(nullptr, options.getConfig());
  EXPECT_TRUE(options.getFlag().isSpecified());
  EXPECT_FALSE(options.getFlag().get()) << "always assigned from the element's presence";
  EXPECT_EQ(-1, read(doc("<clone_flag/>"), options)) << "the core part is required";
}

TEST_F(KTRMigratorTest, CloneOptionIdsAreAddedOnce) {
  KTRMigratorCloneOptions options;
  options.setIds({"101", "7"});
  ASSERT_EQ(0, read(doc("<clone_flags>1</clone_flags><veid>101</veid><veid>102</veid><veid>102</veid>"), options));
  EXPECT_EQ((Ids{"101", "102", "7"}), options.getIds());
}

}  // namespace
}  // namespace KTR
