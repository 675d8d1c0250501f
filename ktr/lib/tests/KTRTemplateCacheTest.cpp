#include "KTRFunctionality/KTRTemplateCache.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessage.h"

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
  std::vector<MBQ::MBQEID> ids;
  for (const std::string& eid : eids) ids.emplace_back(eid);
  object.getEIDs().setIds(ids);
  return object;
}

class KTRTemplateCacheTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/ktrtcacheXXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    dir_ = pattern;
    path_ = dir_ + "/template.cache";
  }
  void TearDown() override {
    ::unlink(path_.c_str());
    ::rmdir(dir_.c_str());
  }
  void poke(std::uint64_t offset, std::uint32_t value) {
    std::fstream f(path_, std::ios::in | std::ios::out | std::ios::binary);
    f.seekp(offset);
    f.write(reinterpret_cast<const char*>(&value), 4);
  }
  std::string dir_;
  std::string path_;
};

TEST(KTRTemplateObjectTest, StringIdJoinsTheIdentityFields) {
  struct Case {
    const char* name;
    KTRTemplateObject object;
    std::string key;
  };
  KTRTemplateObject noArch = makeTemplate("web", false);
  noArch.setTechnologyList({"hqfs"});
  KTRTemplateObject oddId = makeTemplate("web", false, {"101"});
  const Case cases[] = {
      {"application template", makeTemplate("web", false), "web.x86_64.1.0-2.centos.7"},
      {"OS template: two dots in a row", makeTemplate("centos-7", true), "centos-7.x86_64.1.0-2..7"},
      {"first container id as GUID text",
       makeTemplate("web", false, {"{AABBCCDD-0011-2233-4455-66778899AABB}", "ffffffff-0000-0000-0000-000000000000"}),
       "web.x86_64.1.0-2.centos.7.aabbccdd-0011-2233-4455-66778899aabb"},
      {"no architecture in the technologies", noArch, "web..1.0-2.centos.7"},
      {"an id that is no GUID is kept", oddId, "web.x86_64.1.0-2.centos.7.101"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.key, c.object.getStringID()) << c.name;
}

TEST(KTRTemplateObjectTest, WritesKeyIdsAndTemplateAndReadsThemBack) {
  const KTRTemplateObject object = makeTemplate("web", false, {"a1", "b2"});
  MBQ::MBQMessage message("r");
  auto it = message.iterator();
  ASSERT_EQ(0, KTRTemplateObject::Writer()(*it, object));
  const std::string text = message.toString();
  const auto name = text.find("<name>web.x86_64.1.0-2.centos.7.a1</name>");
  const auto eids = text.find("<eid_set><eid>a1</eid><eid>b2</eid></eid_set>");
  const auto package = text.find("<package");
  EXPECT_NE(std::string::npos, name) << text;
  EXPECT_LT(name, eids) << text;
  EXPECT_LT(eids, package) << text;
  EXPECT_NE(std::string::npos, text.find("package_hqtemplateType")) << text;

  std::string bytes;
  ASSERT_EQ(0, object.toBytes(bytes));
  KTRTemplateObject read;
  ASSERT_EQ(0, read.fromBytes(bytes.data(), bytes.size()));
  EXPECT_TRUE(object == read);
  EXPECT_EQ(-1, read.fromBytes("<x/>", 4));  // no template element
  EXPECT_EQ(-1, read.fromBytes("<x", 2));
  EXPECT_TRUE(object == read);
}

TEST_F(KTRTemplateCacheTest, StoresLooksUpAndRemovesTemplates) {
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

  KTRTemplateObject longName = makeTemplate(std::string(240, 'n'), false);
  EXPECT_EQ(-1, cache->insert(longName));
  EXPECT_NE(std::string::npos, MBQ::getErrorMessage().find("too long"));
}

TEST_F(KTRTemplateCacheTest, AKeyOfExactly255CharactersIsStoredWhole) {
  KTRTemplateCachePrototypeSP cache = KTRTemplateCachePrototype::open(path_);
  ASSERT_TRUE(cache);
  KTRTemplateObject object = makeTemplate("x", false);
  object.setName(std::string(255 - object.getStringID().size() + 1, 'n'));
  ASSERT_EQ(255u, object.getStringID().size());
  ASSERT_EQ(0, cache->insert(object));
  KTRTemplateObject found;
  ASSERT_EQ(0, cache->lookup(object.getStringID(), found));
  EXPECT_EQ(object.getName(), found.getName());
}

TEST_F(KTRTemplateCacheTest, OpenRecoversFromACondemnedFile) {
  ASSERT_TRUE(KTRTemplateCachePrototype::open(path_));
  poke(49, 0xDEADBEEF);  // foreign magic
  int code = 1;
  KTRTemplateCachePrototypeSP cache = KTRTemplateCachePrototype::open(path_, &code);
  ASSERT_TRUE(cache);
  EXPECT_EQ(0, code);
  const std::uint32_t magic = cache->getHeader()->magic;  // a copy: the header is packed
  EXPECT_EQ(0xCACEFE03u, magic);
  KTRTemplateObject found;
  EXPECT_EQ(1, cache->lookup("anything", found));
}

TEST_F(KTRTemplateCacheTest, CreateInstanceUsesTheUploadsFolderAndSharesOneHandle) {
  ::setenv("MBQ_UPLOADS_DIR", dir_.c_str(), 1);
  KTRTemplateCachePrototypeSP first = KTRTemplateCachePrototype::createInstance();
  ASSERT_TRUE(first);
  EXPECT_EQ(path_, first->getPath());
  EXPECT_EQ(first, KTRTemplateCachePrototype::createInstance());
  ASSERT_EQ(0, first->insert(makeTemplate("web", false)));
  // Damage found at an access makes the handle let go; the next call makes the file anew.
  poke(44, 0x4b);  // the snapshot pointer now leads nowhere
  KTRTemplateObject lost;
  EXPECT_EQ(-8, first->lookup(makeTemplate("web", false).getStringID(), lost));
  KTRTemplateCachePrototypeSP rebuilt = KTRTemplateCachePrototype::createInstance();
  ASSERT_TRUE(rebuilt);
  EXPECT_NE(first, rebuilt);
  EXPECT_EQ(1, rebuilt->lookup(makeTemplate("web", false).getStringID(), lost));
  ASSERT_EQ(0, rebuilt->insert(makeTemplate("web", false)));
  first = rebuilt;
  // A handle that lost its mapping is replaced by a new one on the same file.
  first->reinit();
  KTRTemplateCachePrototypeSP second = KTRTemplateCachePrototype::createInstance();
  ASSERT_TRUE(second);
  EXPECT_NE(first, second);
  KTRTemplateObject found;
  EXPECT_EQ(0, second->lookup(makeTemplate("web", false).getStringID(), found));
  second->reinit();  // leaves no mapping of this test's file behind

  ::setenv("MBQ_UPLOADS_DIR", (dir_ + "/missing/folder").c_str(), 1);
  EXPECT_FALSE(KTRTemplateCachePrototype::createInstance());
  ::unsetenv("MBQ_UPLOADS_DIR");
}

TEST_F(KTRTemplateCacheTest, ProcessesShareTemplatesThroughTheFile) {
  ASSERT_TRUE(KTRTemplateCachePrototype::open(path_));
  std::vector<pid_t> children;
  for (int c = 0; c < 3; ++c) {
    const pid_t pid = ::fork();
    if (pid == 0) {
      KTRTemplateCachePrototypeSP cache = KTRTemplateCachePrototype::open(path_);
      if (!cache) ::_exit(10);
      for (int i = 0; i < 30; ++i) {
        KTRTemplateObject object = makeTemplate("t" + std::to_string(c) + "-" + std::to_string(i), c == 0);
        if (c == 0) object.setValue(std::string(5000, 'v'));  // grows the file under the others
        if (cache->insert(object) != 0) ::_exit(11);
        KTRTemplateObject found;
        if (cache->lookup(object.getStringID(), found) != 0 || !(found == object)) ::_exit(12);
        if (i % 2 && cache->remove(object.getStringID()) != 0) ::_exit(13);
      }
      ::_exit(0);
    }
    children.push_back(pid);
  }
  for (pid_t pid : children) {
    int status = 0;
    ASSERT_EQ(pid, ::waitpid(pid, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
  }
  KTRTemplateCacheLogic::Report report;
  std::vector<std::string> problems;
  EXPECT_EQ(0, KTRTemplateCacheLogic::checkFile(path_, report, problems)) << problems.front();
  EXPECT_EQ(45u, report.entries);
  KTRTemplateCachePrototypeSP cache = KTRTemplateCachePrototype::open(path_);
  for (int c = 0; c < 3; ++c)
    for (int i = 0; i < 30; i += 2) {
      KTRTemplateObject object = makeTemplate("t" + std::to_string(c) + "-" + std::to_string(i), c == 0);
      KTRTemplateObject found;
      ASSERT_EQ(0, cache->lookup(object.getStringID(), found)) << object.getStringID();
      EXPECT_EQ(object.getName(), found.getName());
    }
}

}  // namespace
}  // namespace KTR
