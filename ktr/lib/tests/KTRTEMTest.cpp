#include "KTRFunctionality/KTRTEM.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "KTRRecordTesting.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"

// Round trips and required children of these records are the catalog's (KTRRecordCatalogTest).

namespace KTR {
namespace {

class KTRTEMTest : public testing::RecordTest {};

KTRTemplateConfigInfo configInfo() {
  KTRTemplateConfigInfo info;
  info.setVersionText("7.0-1");
  info.setName("centos-7-x86_64");
  info.setSettings({{"OSTEMPLATE", "centos-7"}, {"PKG_MANAGER", "yum"}});
  info.setPackages({{"bash", KTRPackage("bash", "4.2")}, {"yum", KTRPackage("yum")}});
  info.setTechnologies({"x86_64", "hqfs"});
  return info;
}

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
TEST_F(KTRTEMTest, PackageRegistryHasNoDefaultAndNoWriterForTheBase) {
  EXPECT_EQ(nullptr, MBQ::MBQDerivedParserFactory<MBQ::MBQPackage>::defaultFactory());
  MBQ::MBQMessage message;
  EXPECT_EQ(-1, MBQ::MBQWriterDerived<MBQ::MBQPackage>()(*message.iterator(), MBQ::MBQPackage("p", "1")));
}

TEST_F(KTRTEMTest, ConfigInfoPackagesAreKeyedByTheirNames) {
  KTRTemplateConfigInfo info = configInfo();
  info.setPackages({{"shell", KTRPackage("bash")}, {"z", KTRPackage("bash", "5")}});
  KTRTemplateConfigInfo back;
  ASSERT_EQ(0, read(write(info), back));
  ASSERT_EQ(1u, back.getPackages().size());
  EXPECT_EQ(KTRPackage("bash"), back.getPackages().at("bash")) << "the first package of a name is kept";
}

TEST_F(KTRTEMTest, ConfigInfoBrokenPackageFailsTheRecordButABrokenSettingEndsTheSettings) {
  const std::string text = write(configInfo());
  KTRTemplateConfigInfo back;
  EXPECT_EQ(-1, read(replaced(text, "<key>yum</key>", ""), back));
  ASSERT_EQ(0, read(replaced(text, "<value>yum</value>", ""), back));
  EXPECT_EQ((std::map<std::string, std::string>{{"OSTEMPLATE", "centos-7"}}), back.getSettings());
  EXPECT_EQ(configInfo().getTechnologies(), back.getTechnologies()) << "reading goes on after the map";
}

}  // namespace
}  // namespace KTR
