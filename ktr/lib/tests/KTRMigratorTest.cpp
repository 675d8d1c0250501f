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

TEST_F(KTRMigratorTest, CloneOptionsRoundTripThroughTheCoreRegistry) {
  auto options = std::make_shared<KTRMigratorCloneOptions>();
  options->setFlags(5);
  options->setFlag(true);
  auto config = std::make_shared<KTREnvConfig>();
  ASSERT_EQ(0, config->setHostname(std::string("clone.example")));
  options->setConfig(config);
  options->setIds({"101", "102"});
  const std::shared_ptr<MBQ::MBQMigratorCloneOptions> base = options;
  const std::string text = write(base, nullptr, MBQ::MBQWriterDerived<MBQ::MBQMigratorCloneOptions>());

  std::shared_ptr<MBQ::MBQMigratorCloneOptions> back;
  ASSERT_EQ(0, MBQ::MBQReaderDerivedValid<MBQ::MBQMigratorCloneOptions>(false)(at(text), back)) << text;
  ASSERT_EQ(typeid(KTRMigratorCloneOptions), typeid(*back));
  const auto& read = static_cast<const KTRMigratorCloneOptions&>(*back);
  EXPECT_EQ(5u, read.getFlags());
  EXPECT_TRUE(read.getFlag().isSpecified() && read.getFlag().get());
  ASSERT_NE(nullptr, read.getConfig());
  MBQ::MBQOptionalProperty<std::string> hostname;
  read.getConfig()->getHostname(hostname);
  EXPECT_EQ(std::string("clone.example"), hostname.get());
  EXPECT_EQ((Ids{"101", "102"}), read.getIds());
}

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

TEST_F(KTRMigratorTest, HardwareNodeNotesReadWhatIsThere) {
  KTRCalculateHWNodeNotes notes;
  notes.setResult(3);
  KTRExcludePath path;
  path.setPath("/var/tmp");
  path.setFlag(true);
  KTRExcludePath bare;
  bare.setPath("/proc");
  KTRCalculateHWNodeWarning warning;
  warning.setText("low disk");
  warning.setCode(28);
  notes.setExcludePaths({path, bare});
  notes.setWarnings({warning});
  const std::string text = write(notes);
  KTRCalculateHWNodeNotes back;
  ASSERT_EQ(0, read(text, back));
  EXPECT_EQ(3, back.getResult());
  ASSERT_EQ(2u, back.getExcludePaths().size());
  EXPECT_TRUE(back.getExcludePaths()[0].getFlag().get());
  EXPECT_FALSE(back.getExcludePaths()[1].getFlag().isSpecified());
  ASSERT_EQ(1u, back.getWarnings().size());
  EXPECT_EQ(28, back.getWarnings()[0].getCode());
  EXPECT_EQ(text, write(back));

  struct Case {
    const char* body;
    int rc;
    std::size_t warnings;
  };
  const Case cases[] = {
      {"<result>0</result>", 0, 0},
      {"<result>0</result><warning/>", 0, 1},  // a warning's fields are all ignorable
      {"<result>0</result><warning><code>x</code></warning>", 0, 1},
      {"<warning><code>1</code></warning>", -1, 0},
      {"<result>zero</result>", -1, 0},
  };
  for (const auto& c : cases) {
    KTRCalculateHWNodeNotes n;
    EXPECT_EQ(c.rc, read(doc(c.body), n)) << c.body;
    if (c.rc == 0) {
      EXPECT_EQ(c.warnings, n.getWarnings().size()) << c.body;
    }
  }
}

TEST_F(KTRMigratorTest, RelocatorTypesAreRegistered) {
  using CloneFactory = MBQ::MBQDerivedParserFactory<MBQ::MBQMigratorCloneOptions>;
  using NotesFactory = MBQ::MBQDerivedParserFactory<MBQ::MBQCalculateHWNodeNotes>;
  EXPECT_NE(nullptr, CloneFactory::findByName(std::string(MBQ::kRelocatorNamespace) + ":clone_optionsType"));
  EXPECT_NE(nullptr, NotesFactory::findByName(std::string(MBQ::kRelocatorNamespace) + ":hw_notesType"));
  EXPECT_EQ(nullptr, CloneFactory::defaultFactory());
}

}  // namespace
}  // namespace KTR
