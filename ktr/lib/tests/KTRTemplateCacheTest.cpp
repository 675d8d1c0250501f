#include "KTRFunctionality/KTRTemplateCache.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <string>
#include <vector>

#include "KTRRecordTesting.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessage.h"

// The cache file itself (layout, damage, recovery, locking) is the core's (MBQCacheLogicTest);
// here the template records, their keys and the shared instance.

namespace KTR {
namespace {

KTRTemplateObject makeTemplate(const std::string& name, bool os, std::vector<std::string> eids = {}) {
  KTRTemplateObject object;
  object.setName(name);
  object.setVersion("1.0-2");
  object.setOsName(MBQ::MBQOptionalProperty<std::string>("centos"));
  object.setOsVersion(MBQ::MBQOptionalProperty<std::string>("7"));
  object.setOsTemplate(os);
  object.setValue("value of " + name);
  object.setTechnologyList({"hqfs", "x86_64"});
  object.getEIDs().setIds(std::vector<MBQ::MBQEID>(eids.begin(), eids.end()));
  return object;
}

class KTRTemplateCacheTest : public ::testing::Test {
 protected:
  testing::TempDir dir_;
  const std::string path_ = dir_.file("template.cache");
};

TEST(KTRTemplateObjectTest, StringIdJoinsTheIdentityFields) {
  struct Case {
    const char* name;
    KTRTemplateObject object;
    std::string key;
  };
  KTRTemplateObject noArch = makeTemplate("web", false);
  noArch.setTechnologyList({"hqfs"});
  const Case cases[] = {
      {"application template", makeTemplate("web", false), "web.x86_64.1.0-2.centos.7"},
      {"OS template: two dots in a row", makeTemplate("centos-7", true), "centos-7.x86_64.1.0-2..7"},
      {"first container id as GUID text",
       makeTemplate("web", false, {"{AABBCCDD-0011-2233-4455-66778899AABB}", "ffffffff-0000-0000-0000-000000000000"}),
       "web.x86_64.1.0-2.centos.7.aabbccdd-0011-2233-4455-66778899aabb"},
      {"no architecture in the technologies", noArch, "web..1.0-2.centos.7"},
      {"an id that is no GUID is kept", makeTemplate("web", false, {"101"}), "web.x86_64.1.0-2.centos.7.101"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.key, c.object.getStringID()) << c.name;
}

TEST(KTRTemplateObjectTest, WritesKeyIdsAndTemplateAndReadsThemBack) {
  const KTRTemplateObject object = makeTemplate("web", false, {"a1", "b2"});
  MBQ::MBQMessage message("r");
  ASSERT_EQ(0, KTRTemplateObject::Writer()(*message.iterator(), object));
  const std::string text = message.toString();
  const auto name = text.find("<name>web.x86_64.1.0-2.centos.7.a1</name>");
  const auto eids = text.find("<eid_set><eid>a1</eid><eid>b2</eid></eid_set>");
  EXPECT_NE(std::string::npos, name) << text;
  EXPECT_LT(name, eids) << text;
  EXPECT_LT(eids, text.find("<package")) << text;
  EXPECT_NE(std::string::npos, text.find("package_hqtemplateType")) << text;

  std::string bytes;
  ASSERT_EQ(0, object.toBytes(bytes));
  KTRTemplateObject read;
  ASSERT_EQ(0, read.fromBytes(bytes.data(), bytes.size()));
  EXPECT_TRUE(object == read);
  EXPECT_EQ(-1, read.fromBytes("<x/>", 4));  // no template element
  EXPECT_EQ(-1, read.fromBytes("<x", 2));
  std::string keyless = bytes;  // the template without its required key
  const auto key = keyless.rfind('<', keyless.find("key>", keyless.find("<package")));
  keyless.erase(key, keyless.find("key>", keyless.find("key>", key) + 4) + 4 - key);
  EXPECT_EQ(-1, read.fromBytes(keyless.data(), keyless.size())) << keyless;
  EXPECT_TRUE(object == read);
}

TEST_F(KTRTemplateCacheTest, StoresLooksUpAndRemovesTemplatesWithKeysOfUpTo255Characters) {
  KTRTemplateCachePrototypeSP cache = KTRTemplateCachePrototype::open(path_);
  ASSERT_TRUE(cache);
  const KTRTemplateObject web = makeTemplate("web", false, {"101"});
  const KTRTemplateObject os = makeTemplate("centos-7", true);
  ASSERT_EQ(0, cache->insert(web));
  ASSERT_EQ(0, cache->insert(os));
  KTRTemplateObject found;
  ASSERT_EQ(0, cache->lookup(os.getStringID(), found));
  EXPECT_TRUE(os == found);

  KTRTemplateCachePrototypeSP other = KTRTemplateCachePrototype::open(path_);
  ASSERT_EQ(0, other->lookup(web.getStringID(), found));
  EXPECT_TRUE(web == found);
  EXPECT_EQ(0, other->remove(web.getStringID()));
  EXPECT_EQ(1, cache->lookup(web.getStringID(), found));
  EXPECT_EQ(1, cache->remove(web.getStringID()));
  EXPECT_EQ(1, cache->lookup(std::string(300, 'k'), found));
  EXPECT_EQ(1, cache->remove(std::string(300, 'k')));

  KTRTemplateObject longest = makeTemplate("x", false);
  longest.setName(std::string(255 - longest.getStringID().size() + 1, 'n'));
  ASSERT_EQ(255u, longest.getStringID().size());
  ASSERT_EQ(0, cache->insert(longest));
  ASSERT_EQ(0, cache->lookup(longest.getStringID(), found));
  EXPECT_EQ(longest.getName(), found.getName());
  longest.setName(longest.getName() + "n");
  EXPECT_EQ(-1, cache->insert(longest));
  EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find("too long"));
}

TEST_F(KTRTemplateCacheTest, CreateInstanceUsesTheUploadsFolderSharesOneHandleAndReplacesALostOne) {
  ::setenv("MBQ_UPLOADS_DIR", dir_.path().c_str(), 1);
  KTRTemplateCachePrototypeSP first = KTRTemplateCachePrototype::createInstance();
  ASSERT_TRUE(first);
  EXPECT_EQ(path_, first->getPath());
  EXPECT_EQ(first, KTRTemplateCachePrototype::createInstance());
  const KTRTemplateObject web = makeTemplate("web", false);
  ASSERT_EQ(0, first->insert(web));
  // Damage found at an access makes the handle let go; the next call makes the file anew.
  {
    std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
    const std::uint32_t nowhere = 0x4b;  // the snapshot pointer
    file.seekp(44);
    file.write(reinterpret_cast<const char*>(&nowhere), 4);
  }
  KTRTemplateObject found;
  EXPECT_EQ(-8, first->lookup(web.getStringID(), found));
  KTRTemplateCachePrototypeSP rebuilt = KTRTemplateCachePrototype::createInstance();
  ASSERT_TRUE(rebuilt);
  EXPECT_NE(first, rebuilt);
  EXPECT_EQ(1, rebuilt->lookup(web.getStringID(), found));
  rebuilt->reinit();  // leaves no mapping of this test's file behind

  ::setenv("MBQ_UPLOADS_DIR", dir_.file("missing/folder").c_str(), 1);
  EXPECT_FALSE(KTRTemplateCachePrototype::createInstance());
  ::unsetenv("MBQ_UPLOADS_DIR");
}

}  // namespace
}  // namespace KTR
