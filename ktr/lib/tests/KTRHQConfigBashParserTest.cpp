#include "KTRFunctionality/KTRHQConfigBashParser.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRBashParser.h"
#include "KTRFunctionality/KTRConfigEdit.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQCore/MBQString.h"

namespace KTR {
namespace {

using Raw = std::map<std::string, std::string>;

KTRVtSettings read(const std::string& text, KTRVtSettings settings = KTRVtSettings()) {
  std::istringstream in(text);
  EXPECT_EQ(0, KTRHQConfigBashParser::getInstance()->getConfig(in, settings));
  return settings;
}

std::string write(const KTRVtSettings& settings, const std::string& oldText = "") {
  std::istringstream old(oldText);
  std::ostringstream out;
  EXPECT_EQ(0, KTRHQConfigBashParser::getInstance()->putConfig(settings, out, &old, true));
  return out.str();
}

// What the settings parser adds to the line engine (KTRBashParserTest): the raw map, the two
// directories, the offline services and its key order.

KTRVtSettings withServices(const std::vector<std::pair<std::string, bool>>& services) {
  std::vector<KTRRedirectService> list;
  for (const auto& service : services)
    list.emplace_back(service.first, 80, MBQ::MBQEID("eid-" + service.first), service.second);
  KTRVtSettings settings;
  settings.setOfflineServices(list);
  return settings;
}

TEST(KTRHQConfigBashParserTest, KeepsEveryAssignmentRawAndInterpretsTheDirectories) {
  // A repeated key keeps its first raw value, and the last one as the directory.
  const KTRVtSettings settings = read(
      "# global\nLOCKDIR=/run/lock\nTemplate=\"/var/lib/quellix/templates\"\nAGENT_LOG_LEVEL=2\nLOCKDIR=/second\n");
  EXPECT_EQ((Raw{{"lockdir", "/run/lock"}, {"template", "/var/lib/quellix/templates"}, {"agent_log_level", "2"}}),
            settings.getSettingsMap());
  EXPECT_EQ(MBQ::MBQOptionalProperty<std::string>("/second"), settings.getLockDir());
  EXPECT_EQ(MBQ::MBQOptionalProperty<std::string>("/var/lib/quellix/templates"), settings.getTemplateDir());
  EXPECT_FALSE(settings.getOfflineServices().isSpecified());

  EXPECT_EQ(MBQ::MBQOptionalProperty<std::string>(""), read("TEMPLATE=\n").getTemplateDir());
}

// ktrctl reads the global file as text; what it finds for a key must be what this parser reads,
// over files that assign keys several times, in several spellings and in forms it does not take.
TEST(KTRHQConfigBashParserTest, TheTextEditorFindsTheValueTheParserReads) {
  std::mt19937 random(20261126);
  const std::vector<std::string> keys = {"LOCKDIR", "template", "Agent_Log", "X"};
  const std::vector<std::string> forms = {"K=a", "k='b c'", "K=\"$d\"", "K=$(cmd)", "export K=e", "K=", "# K=f"};
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (int i = static_cast<int>(random() % 6); i > 0; --i) {
      std::string line = forms[random() % forms.size()];
      line.replace(line.find_first_of("Kk"), 1, keys[random() % keys.size()]);
      text += line + "\n";
    }
    KTRConfigText scan;
    scanConfigText(text, scan);
    const KTRVtSettings settings = read(text);
    for (const std::string& key : keys) {
      const KTRAssignmentLine* found = nullptr;
      const int rc = findGlobalAssignment(scan, key, found);
      const std::string lower = MBQ::toLower(key);
      MBQ::MBQOptionalProperty<std::string> parsed = lower == "lockdir"    ? settings.getLockDir()
                                                     : lower == "template" ? settings.getTemplateDir()
                                                                           : MBQ::MBQOptionalProperty<std::string>();
      if (lower != "lockdir" && lower != "template" && settings.getSettingsMap().count(lower) != 0)
        parsed = settings.getSettingsMap().at(lower);
      if (rc == 0) {
        EXPECT_EQ(MBQ::MBQOptionalProperty<std::string>(found->value), parsed) << key << " in\n" << text;
      } else if (rc == kKeyWithoutValue) {
        EXPECT_FALSE(parsed.isSpecified()) << key << " in\n" << text;
      }
    }
  }
}

TEST(KTRHQConfigBashParserTest, OfflineServicesSwitchTheKnownServicesOnlyAndWriteBackInListOrder) {
  const std::string old = "OFFLINE_SERVICE=\"b  a unknown\"\n";
  const KTRVtSettings settings = read(old, withServices({{"a", false}, {"b", false}, {"c", true}}));
  EXPECT_EQ(withServices({{"a", true}, {"b", true}, {"c", false}}).getOfflineServices(), settings.getOfflineServices());
  EXPECT_EQ("OFFLINE_SERVICE=\"a b\"\n", write(settings, old));

  // Two spaces make an empty name.
  EXPECT_TRUE(read("OFFLINE_SERVICE=\"x  y\"\n", withServices({{"", false}})).getOfflineServices().get()[0].getFlag());
  EXPECT_FALSE(read("OFFLINE_SERVICE=\"x y\"\n", withServices({{"", true}})).getOfflineServices().get()[0].getFlag());

  const KTRVtSettings noList = read("OFFLINE_SERVICE=a\n");
  EXPECT_FALSE(noList.getOfflineServices().isSpecified());
  EXPECT_TRUE(noList.getOfflineServices().get().empty());
}

TEST(KTRHQConfigBashParserTest, GetSideAnswers) {
  KTRVtSettings settings = withServices({{"a", true}, {"b", false}, {"c", true}});
  settings.setSettingsMap(Raw{{"x", "1"}});
  KTRHQConfigBashParser::ParameterParserGet get(settings);
  std::string value;
  EXPECT_EQ(kKeyWithoutValue, get.get("template", value));
  EXPECT_EQ(kKeyWithoutValue, get.get("lockdir", value));
  EXPECT_EQ(kUnknownKey, get.get("y", value));
  EXPECT_EQ(0, get.get("offline_service", value));
  EXPECT_EQ("a c", value);
  value = "pre";
  EXPECT_EQ(0, get.get("offline_service", value));
  EXPECT_EQ("pre a c", value);

  EXPECT_EQ(kKeyWithoutValue, KTRHQConfigBashParser::ParameterParserGet(KTRVtSettings()).get("offline_service", value));
}

TEST(KTRHQConfigBashParserTest, AppendsNothingWhenTheRawMapHoldsOnlyTheDirectories) {
  // Deliberate: without another raw key the first getNext already ends the appending.
  KTRVtSettings settings;
  settings.setLockDir(std::string("/l"));
  settings.setTemplateDir(std::string("/t"));
  EXPECT_EQ("", write(settings));
  settings.setSettingsMap(Raw{{"lockdir", "/l"}});
  EXPECT_EQ("", write(settings));
  EXPECT_EQ("# x\n", write(settings, "# x\n"));

  // Keys come as the first raw key, the directories, then the other raw keys.
  settings.setSettingsMap(Raw{{"a", "1"}, {"lockdir", "/raw"}, {"m", "2"}, {"template", "/raw"}, {"z", "3"}});
  EXPECT_EQ("A=\"1\"\nLOCKDIR=\"/l\"\nTEMPLATE=\"/t\"\nM=\"2\"\nZ=\"3\"\n", write(settings));
  EXPECT_EQ("", write(KTRVtSettings()));
}

}  // namespace
}  // namespace KTR
