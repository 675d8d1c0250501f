#include "KTRFunctionality/KTRTEM.h"

#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace KTR {
namespace {

using Texts = std::vector<std::string>;

// Writes records under an element "r" and reads them back from the message's text, so every
// check goes through XML.
class KTRTEMTest : public testing::RecordTest {
 protected:
  std::string writeDerived(const MBQ::MBQPackage& package) {
    MBQ::MBQMessage message;
    auto it = message.iterator();
    EXPECT_EQ(0, it->addChildAndDescend("r"));
    EXPECT_EQ(0, MBQ::MBQWriterDerived<MBQ::MBQPackage>()(*it, package));
    return message.toString();
  }
  int readDerived(const std::string& text, std::shared_ptr<MBQ::MBQPackage>& package) {
    return MBQ::MBQReaderDerivedValid<MBQ::MBQPackage>(false)(at(text), package);
  }
  // The text with every child `key` of the record's element removed, as a peer that sends
  // less would.
  template <class Key>
  std::string without(const std::string& text, const Key& key) {
    MBQ::MBQMessage message;
    EXPECT_EQ(0, message.parse(text));
    auto it = message.iterator();
    EXPECT_EQ(0, it->descend("r"));
    EXPECT_EQ(0, it->lookup(key)) << "nothing to remove";
    do EXPECT_EQ(0, it->remove());
    while (it->lookup(key) == 0);
    return message.toString();
  }
  // The text with the first child `key` of the record's element holding `value` instead.
  template <class Key>
  std::string replaced(const std::string& text, const Key& key, const std::string& value) {
    MBQ::MBQMessage message;
    EXPECT_EQ(0, message.parse(text));
    auto it = message.iterator();
    EXPECT_EQ(0, it->descend("r"));
    EXPECT_EQ(0, it->descend(key));
    EXPECT_EQ(0, it->setText(value));
    return message.toString();
  }
  static Texts childNames(const MBQ::MBQMessageIterator& it) {
    Texts names;
    if (it.descendFirst() == 0) {
      do names.push_back(it.getName());
      while (it.nextSibling() == 0);
      it.up();
    }
    return names;
  }
  static std::string schemaType(const MBQ::MBQMessageIterator& it) {
    std::string type;
    EXPECT_EQ(0, it.getSchemaType(type));
    return type;
  }
};

KTRPackageHQTemplate fullTemplate() {
  KTRPackageHQTemplate tmpl;
  tmpl.setName("centos");
  tmpl.setVersion("7");
  tmpl.setOsName(std::string("centos"));
  tmpl.setOsVersion(std::string("7.9"));
  tmpl.setOsTemplate(true);
  tmpl.setSecondaryFlag(true);
  tmpl.setUpToDate(true);
  tmpl.setValue("/var/lib/quellix/templates/debian-12-minimal");
  tmpl.setTechnologyList({"hqfs", "x86_64", "nptl"});
  return tmpl;
}

KTRPackageHQTemplateStd fullStdTemplate() {
  KTRPackageHQTemplateStd tmpl;
  static_cast<KTRPackageHQTemplate&>(tmpl) = fullTemplate();
  tmpl.setPrimaryFlag(true);
  return tmpl;
}

KTRTemplateConfigInfo fullConfigInfo() {
  KTRTemplateConfigInfo info;
  info.setVersionText("7.0-1");
  info.setPrimaryFlag(true);
  info.setSecondaryFlag(true);
  info.setTemplates({KTRTemplate("centos-7-x86_64", "20240101"), KTRTemplate("centos-7-minimal")});
  info.setName("centos-7-x86_64");
  info.setConfigText2("text2");
  info.setSettings({{"OSTEMPLATE", "centos-7"}, {"PKG_MANAGER", "yum"}});
  KTRPackage bash("bash", "4.2");
  bash.setTextList({"shell", "base"});
  bash.setFlag(true);
  info.setPackages({{"bash", bash}, {"yum", KTRPackage("yum")}});
  info.setDetail("CentOS 7");
  info.setConfigText4("text4");
  info.setConfigText5("text5");
  info.setTechnologies({"x86_64", "hqfs"});
  return info;
}

// ---------------------------------------------------------------- architecture selector

TEST(KTRArchitectureSelectorTest, AcceptsExactlyTheSupportedNames) {
  struct Case {
    const char* name;
    bool supported;
  };
  const Case cases[] = {
      {"ia64", true},    {"x86", true},      {"x86_64", true},  {"X86_64", false}, {"X86", false},
      {"i386", false},   {"i686", false},    {"amd64", false},  {"x86-64", false}, {"x86_6", false},
      {"x86_64 ", false}, {" x86", false},   {"ia6", false},    {"", false},       {"hqfs", false},
  };
  const KTRArchitectureSelector isSupported;
  for (const Case& c : cases) {
    EXPECT_EQ(c.supported, isSupported(std::string(c.name))) << "string '" << c.name << "'";
    EXPECT_EQ(c.supported, isSupported(c.name)) << "pointer '" << c.name << "'";
  }
  EXPECT_FALSE(isSupported(static_cast<const char*>(nullptr)));
}

TEST(KTRArchitectureSelectorTest, SupportedTableIsSortedForTheBinarySearch) {
  const auto& table = KTRArchitectureSelector::SUPPORTED;
  EXPECT_TRUE(std::is_sorted(std::begin(table), std::end(table),
                             [](const char* a, const char* b) { return std::strcmp(a, b) < 0; }));
  EXPECT_EQ((Texts{"ia64", "x86", "x86_64"}), Texts(std::begin(table), std::end(table)));
}

TEST(KTRArchitectureSelectorTest, ArchitectureIsTheFirstSupportedTechnology) {
  struct Case {
    Texts technologies;
    const char* arch;
  };
  const Case cases[] = {
      {{"hqfs", "x86_64"}, "x86_64"},
      {{"x86", "x86_64"}, "x86"},  // the first match wins, not the most specific one
      {{"x86_64", "x86"}, "x86_64"},
      {{"nptl", "ia64", "x86"}, "ia64"},
      {{"X86_64", "hqfs"}, ""},
      {{"i386"}, ""},
      {{"hqfs", "nptl"}, ""},
      {{}, ""},
  };
  for (const Case& c : cases)
    EXPECT_EQ(c.arch, KTRArchitectureSelector::getArch(c.technologies)) << ::testing::PrintToString(c.technologies);
}

TEST(KTRArchitectureSelectorTest, EmptyTechnologyListKeepsTheArchitecture) {
  struct Step {
    Texts technologies;
    const char* arch;
  };
  // One template, lists set one after the other.
  const Step steps[] = {
      {{"hqfs", "x86_64"}, "x86_64"},
      {{}, "x86_64"},  // says nothing about the architecture
      {{"hqfs"}, ""},  // says there is none
      {{"ia64"}, "ia64"},
      {{"i386", "X86"}, ""},
  };
  KTRPackageHQTemplate tmpl;
  EXPECT_EQ("", tmpl.getArchitecture());
  for (const Step& step : steps) {
    tmpl.setTechnologyList(step.technologies);
    EXPECT_EQ(step.technologies, tmpl.getTechnologyList());
    EXPECT_EQ(step.arch, tmpl.getArchitecture()) << ::testing::PrintToString(step.technologies);
  }
}

// ---------------------------------------------------------------- HQ templates

TEST_F(KTRTEMTest, TemplateWrittenUnderAnIdIsTypedThere) {
  // How a template travels inside another record (a list, the template cache's entry).
  MBQ::MBQMessage message;
  auto it = message.iterator();
  ASSERT_EQ(0, it->addChildAndDescend("r"));
  ASSERT_EQ(0, it->putObject(fullStdTemplate(), KTRPackageHQTemplateStd::Writer(), 1295));
  MBQ::MBQMessageIterator& reread = at(message.toString());

  std::shared_ptr<MBQ::MBQPackage> base;
  ASSERT_EQ(0, MBQ::MBQReaderID(MBQ::MBQReaderDerivedValid<MBQ::MBQPackage>(false), 1295)(reread, base));
  const auto* back = dynamic_cast<const KTRPackageHQTemplateStd*>(base.get());
  ASSERT_NE(nullptr, back);
  EXPECT_EQ(fullStdTemplate(), *back);
}

TEST_F(KTRTEMTest, ElementOfAnotherTypeIsNotAPackage) {
  const std::string good = writeDerived(fullTemplate());
  struct Case {
    const char* what;
    std::string type;
    std::string ns;
  };
  const Case cases[] = {
      {"a record of another registry", "venv_configType", MBQ::kTypesNamespace},
      {"the right name in another namespace", "package_hqtemplateType", MBQ::kUpdateNamespace},
      {"the right name in no namespace", "package_hqtemplateType", ""},
      {"an unknown type", "package_templateType", MBQ::kTypesNamespace},
  };
  for (const Case& c : cases) {
    MBQ::MBQMessage message;
    ASSERT_EQ(0, message.parse(good));
    auto it = message.iterator();
    ASSERT_EQ(0, it->descend("r"));
    ASSERT_EQ(0, it->setSchemaType(c.type, c.ns));
    auto untouched = std::make_shared<KTRPackageHQTemplate>();
    std::shared_ptr<MBQ::MBQPackage> base = untouched;
    EXPECT_EQ(-1, readDerived(message.toString(), base)) << c.what;
    EXPECT_EQ(untouched, base) << c.what << ": the caller's pointer is left as it was";
  }
}

TEST_F(KTRTEMTest, PackageRegistryHoldsBothTemplatesAndNoDefault) {
  using Factory = MBQ::MBQDerivedParserFactory<MBQ::MBQPackage>;
  const std::string ns = MBQ::kTypesNamespace;
  const Factory* hq = Factory::findByName(ns + ":package_hqtemplateType");
  const Factory* standard = Factory::findByName(ns + ":package_std_hqtemplateType");
  ASSERT_NE(nullptr, hq);
  ASSERT_NE(nullptr, standard);
  EXPECT_EQ(hq, Factory::findByType(typeid(KTRPackageHQTemplate)));
  EXPECT_EQ(standard, Factory::findByType(typeid(KTRPackageHQTemplateStd)));
  EXPECT_EQ(nullptr, Factory::defaultFactory());
  EXPECT_EQ(nullptr, Factory::findByType(typeid(MBQ::MBQPackage))) << "only derived records register";

  std::shared_ptr<MBQ::MBQPackage> base;
  EXPECT_EQ(-1, readDerived(write(MBQ::MBQPackage("p", "1")), base)) << "an untyped package";
  EXPECT_EQ(nullptr, base);
  MBQ::MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(-1, MBQ::MBQWriterDerived<MBQ::MBQPackage>()(*it, MBQ::MBQPackage("p", "1")))
      << "the base record has no writer of its own type";
}

// ---------------------------------------------------------------- template configuration

TEST_F(KTRTEMTest, ConfigInfoPackagesAreKeyedByTheirNames) {
  KTRTemplateConfigInfo info = fullConfigInfo();
  info.setPackages({{"shell", KTRPackage("bash")}, {"z", KTRPackage("bash", "5")}});
  KTRTemplateConfigInfo back;
  ASSERT_EQ(0, read(write(info), back));
  ASSERT_EQ(1u, back.getPackages().size());
  EXPECT_EQ(KTRPackage("bash"), back.getPackages().at("bash")) << "the first package of a name is kept";
}

TEST_F(KTRTEMTest, ConfigInfoBrokenPartsStopTheirListOnly) {
  const std::string text = write(fullConfigInfo());
  // A package without a name fails the record; a setting without a value ends the settings.
  {
    MBQ::MBQMessage message;
    ASSERT_EQ(0, message.parse(text));
    auto it = message.iterator();
    ASSERT_EQ(0, it->descend("r"));
    ASSERT_EQ(0, it->descend(1295));
    ASSERT_EQ(0, it->next(1295));
    ASSERT_EQ(0, it->lookup(1026));
    ASSERT_EQ(0, it->remove());
    KTRTemplateConfigInfo back;
    EXPECT_EQ(-1, read(message.toString(), back));
  }
  {
    MBQ::MBQMessage message;
    ASSERT_EQ(0, message.parse(text));
    auto it = message.iterator();
    ASSERT_EQ(0, it->descend("r"));
    ASSERT_EQ(0, it->descend(1502));
    ASSERT_EQ(0, it->descend(1017));
    ASSERT_EQ(0, it->next(1017));
    ASSERT_EQ(0, it->lookup(1018));
    ASSERT_EQ(0, it->remove());
    KTRTemplateConfigInfo back;
    ASSERT_EQ(0, read(message.toString(), back));
    EXPECT_EQ((std::map<std::string, std::string>{{"OSTEMPLATE", "centos-7"}}), back.getSettings());
    EXPECT_EQ(fullConfigInfo().getTechnologies(), back.getTechnologies()) << "reading goes on after the map";
  }
}

}  // namespace
}  // namespace KTR
