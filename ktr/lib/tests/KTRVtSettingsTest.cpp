#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRVPSType.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace KTR {
namespace {

using MBQ::MBQOptionalProperty;

// Writes records under an element "r" and reads them back from the message's text, so every
// check goes through XML.
class KTRVtSettingsTest : public testing::RecordTest {
 protected:
  // Removes the first child with that id or name from the record's element, as a peer that
  // sends less would.
  template <class Key>
  std::string without(const std::string& text, const Key& key) {
    MBQ::MBQMessage message;
    EXPECT_EQ(0, message.parse(text));
    auto it = message.iterator();
    EXPECT_EQ(0, it->descend("r"));
    EXPECT_EQ(0, it->lookup(key));
    EXPECT_EQ(0, it->remove());
    return message.toString();
  }
  static int count(const MBQ::MBQMessageIterator& it, int id) {
    int n = 0;
    if (it.descend(id) != 0) return 0;
    do ++n;
    while (it.next(id) == 0);
    it.up();
    return n;
  }
  static std::vector<std::string> childNames(const MBQ::MBQMessageIterator& it) {
    std::vector<std::string> names;
    if (it.descendFirst() == 0) {
      do names.push_back(it.getName());
      while (it.nextSibling() == 0);
      it.up();
    }
    return names;
  }
};

KTRVtSettings fullSettings() {
  KTRVtSettings settings;
  settings.setSettingsVersion(3);
  settings.setLockDir(std::string("/run/quellix/lock"));
  settings.setTemplateDir(std::string("/var/lib/quellix/templates"));
  settings.setSettingsMap({{"a", "1"}, {"b", "2"}});
  settings.setOfflineServices(std::vector<KTRRedirectService>{
      KTRRedirectService("webpanel", 8080, MBQ::MBQEID("sve-1"), true),
      KTRRedirectService("ssh", 22, MBQ::MBQEID("sve-2"), false)});
  settings.setQoSes({MBQ::MBQQoS("numproc", 100, 200), MBQ::MBQQoS("cpuweight", 1000)});
  return settings;
}

// ---------------------------------------------------------------- redirect services

// ---------------------------------------------------------------- settings

TEST_F(KTRVtSettingsTest, OfflineServicesTellEmptyFromUnspecified) {
  struct Case {
    const char* what;
    MBQOptionalProperty<std::vector<KTRRedirectService>> services;
    bool marker;
    int items;
  };
  const Case cases[] = {
      {"unspecified", {}, false, 0},
      {"specified, empty", std::vector<KTRRedirectService>{}, true, 0},
      {"one service", std::vector<KTRRedirectService>{KTRRedirectService("a", 1, MBQ::MBQEID("s"))}, false, 1},
  };
  for (const Case& c : cases) {
    KTRVtSettings settings;
    settings.setOfflineServices(c.services);
    const std::string text = write(settings);
    EXPECT_EQ(c.marker, at(text).hasChild("no_offline_service")) << c.what;
    EXPECT_EQ(c.items, count(at(text), 1747)) << c.what;

    KTRVtSettings back = fullSettings();
    ASSERT_EQ(0, read(text, back)) << c.what;
    EXPECT_EQ(c.services, back.getOfflineServices()) << c.what;
  }
}

TEST_F(KTRVtSettingsTest, BrokenOfflineServiceLeavesTheListUnspecified) {
  KTRVtSettings settings;
  settings.setOfflineServices(std::vector<KTRRedirectService>{KTRRedirectService("a", 1, MBQ::MBQEID("s"))});
  MBQ::MBQMessage message;
  ASSERT_EQ(0, message.parse(write(settings)));
  auto it = message.iterator();
  ASSERT_EQ(0, it->descend("r"));
  ASSERT_EQ(0, it->descend(1747));
  ASSERT_EQ(0, it->lookup(1704));
  ASSERT_EQ(0, it->remove());

  KTRVtSettings back;
  EXPECT_EQ(0, read(message.toString(), back)) << "the list's failure is not the record's";
  EXPECT_FALSE(back.getOfflineServices().isSpecified());
}

TEST_F(KTRVtSettingsTest, SettingsMapItemsMayLackEitherPart) {
  struct Case {
    const char* what;
    const char* items;
    std::map<std::string, std::string> expected;
  };
  const Case cases[] = {
      {"no map at all", "", {}},
      {"key without value", "<item><name>k</name></item>", {{"k", ""}}},
      {"value without key", "<item><value>v</value></item>", {{"", "v"}}},
      {"repeated key keeps the first value",
       "<item><name>k</name><value>1</value></item><item><name>k</name><value>2</value></item>",
       {{"k", "1"}}},
  };
  for (const Case& c : cases) {
    KTRVtSettings back = fullSettings();
    const std::string text =
        std::string("<m><r>") + c.items + "<qoses/><settings_version>1</settings_version></r></m>";
    ASSERT_EQ(0, read(text, back)) << c.what;
    EXPECT_EQ(c.expected, back.getSettingsMap()) << c.what;
    EXPECT_TRUE(back.getQoSes().empty()) << c.what << ": the old resources are dropped too";
  }
}

TEST_F(KTRVtSettingsTest, ResourcesAreReadWithoutFailingTheRecord) {
  struct Case {
    const char* what;
    const char* qoses;
    std::size_t expected;
  };
  const Case cases[] = {
      {"no qoses element", "", 0},
      {"empty qoses", "<qoses/>", 0},
      {"two resources", "<qoses><qos_value><id>a</id><limit>1</limit></qos_value>"
                        "<qos_value><id>b</id><limit>2</limit></qos_value></qoses>", 2},
      {"broken second resource", "<qoses><qos_value><id>a</id><limit>1</limit></qos_value>"
                                 "<qos_value><id>b</id></qos_value></qoses>", 1},
  };
  for (const Case& c : cases) {
    KTRVtSettings back;
    const std::string text = std::string("<m><r>") + c.qoses + "<settings_version>1</settings_version></r></m>";
    ASSERT_EQ(0, read(text, back)) << c.what;
    EXPECT_EQ(c.expected, back.getQoSes().size()) << c.what;
  }
}

TEST_F(KTRVtSettingsTest, BaseRecordDecidesTheResult) {
  KTRVtSettings back;
  EXPECT_EQ(-1, read(without(write(fullSettings()), "settings_version"), back));
  EXPECT_EQ(MBQOptionalProperty<std::string>(std::string("/run/quellix/lock")), back.getLockDir())
      << "the own elements are read before the base part";
}

// ---------------------------------------------------------------- virtualization info

TEST_F(KTRVtSettingsTest, VtInfoRoundTripsAndIgnoresItsOwnElements) {
  KTRVtInfo info;
  info.setName("quellix");
  info.setVersion("7.0");
  info.setRelease("7.0.1");
  info.setVtText("build 12");
  info.setSveEID(MBQ::MBQEID("sve-9"));
  info.setItems({"a", "b", "c"});
  MBQ::MBQMessage message;
  auto it = message.iterator();
  ASSERT_EQ(0, it->addChildAndDescend("r"));
  ASSERT_EQ(0, MBQ::MBQWriterDerived<MBQ::MBQVtInfo>()(*it, info));
  const std::string text = message.toString();
  EXPECT_EQ((std::vector<std::string>{"release", "vt_text", "sve_eid", "vt_item", "vt_item", "vt_item", "vt_name",
                                      "vt_version"}),
            childNames(at(text)));

  std::shared_ptr<MBQ::MBQVtInfo> base;
  ASSERT_EQ(0, MBQ::MBQReaderDerivedValid<MBQ::MBQVtInfo>(false)(at(text), base));
  const auto* back = dynamic_cast<const KTRVtInfo*>(base.get());
  ASSERT_NE(nullptr, back);
  EXPECT_EQ("quellix", back->getName());
  EXPECT_EQ("7.0", back->getVersion());
  EXPECT_EQ("7.0.1", back->getRelease());
  EXPECT_EQ("build 12", back->getVtText());
  EXPECT_EQ("sve-9", back->getSveEID().toString());
  EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), back->getItems());

  KTRVtInfo bare;
  bare.setItems({"stale"});
  ASSERT_EQ(0, read("<m><r><vt_name>quellix</vt_name></r></m>", bare)) << "own elements are optional";
  EXPECT_TRUE(bare.getItems().empty());
  EXPECT_EQ(-1, read(without(text, "vt_name"), bare)) << "the base name is required";
}

// ---------------------------------------------------------------- connection link

// ---------------------------------------------------------------- container type, capability

TEST_F(KTRVtSettingsTest, ContainerTypeTextForm) {
  struct Case {
    const char* text;
    int type;
    const char* ctid;
  };
  const Case good[] = {
      {"1:101", 1, "101"}, {"2", 2, ""}, {" 7 :abc", 7, "abc"}, {"-1:x", -1, "x"},
      {"0:00112233-4455-6677-8899-aabbccddeeff", 0, "00112233-4455-6677-8899-aabbccddeeff"},
  };
  for (const Case& c : good) {
    KTRVPSType type;
    ASSERT_EQ(0, type.fromString(c.text)) << c.text;
    EXPECT_EQ(c.type, type.getType()) << c.text;
    EXPECT_STREQ(c.ctid, type.getCtid().toString()) << c.text;
  }
  for (const char* bad : {"", ":101", "x:101", "1x:101", "99999999999:1"}) {
    KTRVPSType type(4, CtidWrapper(4u));
    EXPECT_EQ(-1, type.fromString(bad)) << bad;
    EXPECT_EQ(4, type.getType()) << bad;
    EXPECT_STREQ("4", type.getCtid().toString()) << bad;
  }
  EXPECT_EQ("1:101", KTRVPSType(1, CtidWrapper(101u)).toString());
  EXPECT_EQ("3", KTRVPSType(3, CtidWrapper(std::string())).toString());
}

}  // namespace
}  // namespace KTR
