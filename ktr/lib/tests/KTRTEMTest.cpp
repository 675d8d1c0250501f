#include "KTRFunctionality/KTRTEM.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>
#include <vector>

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest);
// how a template configuration reads its packages and settings is ktrctl's (msg-update.t).

namespace KTR {
namespace {

TEST(KTRArchitectureSelectorTest, AcceptsExactlyTheSupportedNamesFromASortedTable) {
  const auto& table = KTRArchitectureSelector::SUPPORTED;
  EXPECT_TRUE(std::is_sorted(std::begin(table), std::end(table),
                             [](const char* a, const char* b) { return std::strcmp(a, b) < 0; }))
      << "the look-up is a binary search";
  const KTRArchitectureSelector isSupported;
  for (const char* name : {"ia64", "x86", "x86_64"}) {
    EXPECT_TRUE(isSupported(std::string(name))) << name;
    EXPECT_TRUE(isSupported(name)) << name;
  }
  for (const char* name : {"X86_64", "X86", "i386", "i686", "amd64", "x86-64", "x86_6", "x86_64 ", " x86", "ia6", "",
                           "hqfs"}) {
    EXPECT_FALSE(isSupported(std::string(name))) << "'" << name << "'";
    EXPECT_FALSE(isSupported(name)) << "'" << name << "'";
  }
  EXPECT_FALSE(isSupported(static_cast<const char*>(nullptr)));
}

TEST(KTRArchitectureSelectorTest, ArchitectureIsTheFirstSupportedTechnologyAndAnEmptyListKeepsIt) {
  struct Step {
    std::vector<std::string> technologies;
    const char* arch;
  };
  // One template, lists set one after the other.
  const Step steps[] = {
      {{"hqfs", "x86_64"}, "x86_64"},
      {{}, "x86_64"},  // says nothing about the architecture
      {{"hqfs", "nptl"}, ""},  // says there is none
      {{"x86", "x86_64"}, "x86"},  // the first match wins, not the most specific one
      {{"x86_64", "x86"}, "x86_64"},
      {{"nptl", "ia64", "x86"}, "ia64"},
      {{"i386", "X86"}, ""},
  };
  KTRPackageHQTemplate tmpl;
  EXPECT_EQ("", tmpl.getArchitecture());
  for (const Step& step : steps) {
    tmpl.setTechnologyList(step.technologies);
    EXPECT_EQ(step.technologies, tmpl.getTechnologyList());
    EXPECT_EQ(step.arch, tmpl.getArchitecture()) << ::testing::PrintToString(step.technologies);
    if (!step.technologies.empty()) {
      EXPECT_EQ(step.arch, KTRArchitectureSelector::getArch(step.technologies));
    }
  }
  EXPECT_EQ("", KTRArchitectureSelector::getArch({}));
}

// How the registry picks a class is the core's (MBQDerivedParsersTest); the templates' own
// registrations are the catalog's.
TEST(KTRTEMTest, PackageRegistryHasNoDefaultAndNoWriterForTheBase) {
  EXPECT_EQ(nullptr, MBQ::MBQDerivedParserFactory<MBQ::MBQPackage>::defaultFactory());
  EXPECT_EQ(-1, MBQ::MBQWriterDerived<MBQ::MBQPackage>()(*MBQ::MBQMessage().iterator(), MBQ::MBQPackage("p", "1")));
}

}  // namespace
}  // namespace KTR
