#include "KTRFunctionality/KTRHardDisk.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTRConverters.h"
#include "KTRFunctionality/KTRDiskConverter.h"
#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRFormat.h"
#include "KTRRecordTesting.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace KTR {
namespace HardDisk {
namespace {

using DromoList = List::Images<Dromo>;
using LoopbackList = List::Images<Loopback>;

const MBQ::MBQGUID kGuid(0x0011223344556677ULL, 0x8899aabbccddeeffULL);
const std::string kGuidText = "00112233-4455-6677-8899-aabbccddeeff";
const std::string kEmptyGuidText = "00000000-0000-0000-0000-000000000000";

Dromo dromo(const std::string& image, long long size, const MBQ::MBQGUID& uuid = MBQ::MBQGUID(), bool expanded = true) {
  Dromo disk(size, expanded);
  disk.setImage(image);
  disk.setUuid(uuid);
  return disk;
}

Loopback loopback(const MBQ::MBQGUID& uuid) {
  Loopback disk(MBQ::MBQDevMountInfo("/var/lib/quellix/images/101.img", "/var/lib/quellix/root/101", "ext4", 1, 0, 2));
  disk.setUuid(uuid);
  return disk;
}

HqFS hqfs(const std::string& path) {
  HqFS disk(MBQ::MBQQoS("diskblocks", 1048576, 1153434), MBQ::MBQQoS("inodes", 200000, 220000));
  disk.setPath(path);
  return disk;
}

const auto kSame = [](const std::string& s) { return s; };

class KTRHardDiskTest : public testing::RecordTest {};

TEST_F(KTRHardDiskTest, LoadSplitsAtEverySeparatorTrimsAndSkipsEmptyPieces) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "load")) {
    std::vector<std::string> pieces;
    EXPECT_EQ(0, Format::Load(c.at(0), c.at(1), std::back_inserter(pieces), kSame)) << c[0];
    EXPECT_EQ(std::vector<std::string>(c.begin() + 2, c.end()), pieces) << c[0];
  }
}

TEST_F(KTRHardDiskTest, SaveSeparatesOnlyNonEmptyTexts) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{}, ""}, {{"a", "b"}, "a;b"}, {{"", "a"}, "a"}, {{"a", ""}, "a"}, {{"a", "", "b"}, "a;b"}};
  for (const auto& [items, expected] : cases) {
    std::string out = "stale";
    EXPECT_EQ(0, Format::Save(items, ';', out, kSame));
    EXPECT_EQ(expected, out);
  }
}

TEST_F(KTRHardDiskTest, NameValueTakesNameAndFirstWord) {
  const Format::NameValue<'='> convert;
  for (const auto& c : MBQ::test::caseRows(__FILE__, "name-value")) {
    const auto item = convert(c.at(0));
    EXPECT_EQ(c.at(1), item.first) << c[0];
    EXPECT_EQ(c.at(2), item.second) << c[0];
  }
  EXPECT_EQ("a=b", convert(std::make_pair(std::string("a"), std::string("b"))));
  std::map<std::string, std::string> map;
  Format::Load("k=1, k=2 ,j=3", ",", std::inserter(map, map.end()), convert);
  EXPECT_EQ((std::map<std::string, std::string>{{"j", "3"}, {"k", "1"}}), map) << "the first of two names counts";
}

// The text of disks read from a file shows in ktrctl's read-devices transcript.
TEST_F(KTRHardDiskTest, DromoTextForms) {
  for (const auto& c : MBQ::test::caseRows(__FILE__, "dromo")) {
    MBQ::MBQGUID uuid;
    if (c.size() > 3 && !c[3].empty()) { ASSERT_EQ(0, uuid.fromString(c[3])); }
    const Dromo expected = c.at(1) == "none" ? Dromo() : dromo(c[1], std::stoll(c.at(2)), uuid);
    Dromo read;
    read.fromString(c[0]);
    EXPECT_EQ(expected, read) << c[0];
  }
  // No DISK value reads as this disk (an image needs a size above 0), so its text shows only
  // here; `expanded` is not in the text.
  EXPECT_EQ("image=/a.img,size=-5,uuid={" + kGuidText + "}", dromo("/a.img", -5, kGuid, false).toString());
}

TEST_F(KTRHardDiskTest, DromoFromStringFillsInPlace) {
  const Dromo filled = dromo("/old.img", 50, kGuid, false);
  Dromo badUuid = filled;
  badUuid.fromString("image=/new.img,size=99,uuid=bad");
  EXPECT_EQ(filled, badUuid) << "a uuid that does not parse stops before any other field";

  Dromo noSize = filled;
  noSize.fromString("image=/new.img,size=0");
  EXPECT_EQ("/old.img", noSize.image()) << "without a size the image is left as it was";
  EXPECT_EQ(0, noSize.size());
  EXPECT_FALSE(noSize.uuid().isValid()) << "an absent uuid is the empty one";
  EXPECT_FALSE(noSize.expanded());
}

TEST_F(KTRHardDiskTest, ListWithoutDisksDoesNotRead) {
  for (const char* type : {"ct_dromo_disk", "ct_loopback_disk", "ct_hqfs"}) {
    const std::string text = std::string("<m xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:ktr='") +
                             MBQ::kTypesNamespace + "'><r xsi:type='ktr:" + type + "'/></m>";
    auto kept = std::make_shared<DromoList>();
    std::shared_ptr<List::Base> read = kept;
    EXPECT_EQ(-1, MBQ::MBQReaderDerivedValid<List::Base>(false)(at(text), read)) << type;
    EXPECT_EQ(kept, read) << "a failed read leaves the pointer";
  }
}

TEST_F(KTRHardDiskTest, EmptyImageListsHaveNoMessageForm) {
  MBQ::MBQMessage message;
  auto it = message.iterator();
  EXPECT_EQ(-1, DromoList::Writer()(*it, DromoList()));
  EXPECT_EQ(-1, LoopbackList::Writer()(*it, LoopbackList()));
  EXPECT_FALSE(it->hasChild(1275)) << "nothing is written";
  EXPECT_EQ(-1, MBQ::MBQWriterDerived<List::Base>()(*it, DromoList()));
}

TEST_F(KTRHardDiskTest, ValidatorMarksListsThatPointAtStorage) {
  const std::pair<std::shared_ptr<List::Base>, int> cases[] = {
      {std::make_shared<List::HqFS>(hqfs("")), 0},
      {std::make_shared<List::HqFS>(hqfs("/var/lib/quellix/private/101")), 1},
      {std::make_shared<DromoList>(), 0},
      {std::make_shared<DromoList>(std::vector<Dromo>{dromo("/a.img", 1, kGuid)}), 0},
      {std::make_shared<LoopbackList>(std::vector<Loopback>{loopback(kGuid)}), 1},
      {std::make_shared<LoopbackList>(std::vector<Loopback>{Loopback(), loopback(kGuid)}), 0},
  };
  int index = 0;
  for (const auto& [list, expected] : cases) EXPECT_EQ(expected, validateReplacement(*list)) << "case " << index++;
}

TEST_F(KTRHardDiskTest, SaveVisitorWritesOnlyImageDiskLists) {
  Disk::Save save;
  DromoList two({dromo("/a.img", 1, kGuid), dromo("/b.img", 2)});
  EXPECT_EQ(0, two.accept(save));
  EXPECT_EQ("image=/a.img,size=1,uuid={" + kGuidText + "};image=/b.img,size=2,uuid={" + kEmptyGuidText + "}",
            save.result());

  List::HqFS fsList(hqfs("/var/lib/quellix/private/1"));
  EXPECT_EQ(Disk::kNoTextForm, fsList.accept(save));
  EXPECT_EQ("", save.result()) << "text of an earlier list is dropped";

  EXPECT_EQ(0, two.accept(save));
  LoopbackList loops({loopback(kGuid)});
  EXPECT_EQ(424, loops.accept(save));
  EXPECT_EQ("", save.result());

  DromoList none;
  EXPECT_EQ(0, none.accept(save));
  EXPECT_EQ("", save.result());
}

std::vector<Dromo> disksOf(const KTREnvConfig& config) {
  std::shared_ptr<List::Base> disks;
  EXPECT_EQ(0, config.getHardDisks(disks));
  auto* images = dynamic_cast<DromoList*>(disks.get());
  return images ? images->disks() : std::vector<Dromo>{};
}

// The configuration keeps disks in their message form, which leaves out the size and
// "expanded" of a disk without an image. DISK values that come back as they were show in
// ktrctl's read-devices transcript.
TEST_F(KTRHardDiskTest, DiskWithoutImageComesBackNotExpanded) {
  KTREnvConfig config;
  ASSERT_EQ(0, Disk::readDisks("disk", "size=0,image=/var/lib/quellix/private/101/spare.img", config));
  EXPECT_EQ(std::vector<Dromo>{dromo("", 0, MBQ::MBQGUID(), false)}, disksOf(config));
  std::string out = "stale";
  EXPECT_EQ(0, Disk::writeDisks("disk", config, out));
  EXPECT_EQ("image=,size=0,uuid={" + kEmptyGuidText + "}", out);
}

TEST_F(KTRHardDiskTest, BlankDiskValueGivesAnEmptyListThatTheConfigurationRefuses) {
  for (const char* value : {"", " ; ;\t"}) {
    KTREnvConfig config;
    ASSERT_EQ(0, Disk::readDisks("disk", "image=/a,size=1", config));
    // The empty list reaches setHardDisks, which replaces the image disks and cannot write an
    // empty list.
    EXPECT_EQ(-1, Disk::readDisks("disk", value, config)) << value;
    std::shared_ptr<List::Base> disks;
    config.getHardDisks(disks);
    EXPECT_EQ(nullptr, disks) << value;
  }
}

TEST_F(KTRHardDiskTest, WriteDisksWithoutTextForm) {
  KTREnvConfig none;
  std::string out = "kept";
  EXPECT_EQ(0, Disk::writeDisks("disk", none, out)) << "no disk list, nothing to say";
  EXPECT_EQ("kept", out);

  const List::HqFS fsList(hqfs(""));
  const LoopbackList loops({Loopback()});
  for (const List::Base* list : {static_cast<const List::Base*>(&fsList), static_cast<const List::Base*>(&loops)}) {
    KTREnvConfig config;
    ASSERT_EQ(0, config.setHardDisks(list));
    EXPECT_EQ(Disk::kNoTextForm, Disk::writeDisks("disk", config, out));
    EXPECT_EQ("kept", out);
  }
}

TEST_F(KTRHardDiskTest, DiskValueDoesNotReplaceDisksInUse) {
  KTREnvConfig config;
  const List::HqFS inUse(hqfs("/var/lib/quellix/private/101"));
  ASSERT_EQ(0, config.setHardDisks(&inUse));
  EXPECT_EQ(-1, Disk::readDisks("disk", "image=/a.img,size=1", config));
  std::shared_ptr<List::Base> disks;
  ASSERT_EQ(0, config.getHardDisks(disks));
  auto* fsList = dynamic_cast<List::HqFS*>(disks.get());
  ASSERT_NE(nullptr, fsList);
  EXPECT_EQ(inUse.disk(), fsList->disk());

  KTREnvConfig unused;
  const LoopbackList loops({Loopback()});
  ASSERT_EQ(0, unused.setHardDisks(&loops));
  EXPECT_EQ(0, Disk::readDisks("disk", "image=/a.img,size=1", unused)) << "a loopback disk without uuid is free";
  EXPECT_EQ(std::vector<Dromo>{dromo("/a.img", 1)}, disksOf(unused));
  EXPECT_EQ(0, unused.setHardDisks(nullptr)) << "no list: free disks are dropped";
  EXPECT_TRUE(disksOf(unused).empty());
}

// Text from a file is never trusted: whatever it holds, reading gives records (never a
// failure of the text itself, never a crash), and the records written back read back equal.
TEST_F(KTRHardDiskTest, BadDiskTextNeverFails) {
  const std::string nul("image=/a\0b,size=1", 17);
  const std::string hugeCommas(100000, ',');
  const std::string hugeImage = "image=" + std::string(70000, 'x') + ",size=1";
  const std::string cases[] = {
      "=", "==,,==", ";;;", "uuid", "uuid=", "uuid={", "uuid={}", "uuid=}" + kGuidText + "{",
      "size=99999999999999999999", "size=-9223372036854775808,image=/a", "size=-", "size=+1,image=/p",
      "image=\x01\x02\xff,size=3", nul, hugeCommas, hugeImage, "\t\n\v\f\r", "{;}", "image=;size=1",
      "image=a=b=c,size=2", "image=,,size=,uuid=,", "uuid={" + kGuidText + "}}", "image=/a,size=0x10",
  };
  for (const std::string& text : cases) {
    Dromo disk;
    disk.fromString(text);
    Dromo again;
    again.fromString(disk.toString());
    EXPECT_EQ(disk, again) << text.substr(0, 60);

    std::vector<Dromo> disks;
    EXPECT_EQ(0, Format::Load(text, ";", std::back_inserter(disks), FromStringConverter<Dromo>()));
    KTREnvConfig config;
    const int rc = Disk::readDisks("disk", text, config);
    EXPECT_EQ(disks.empty() ? -1 : 0, rc) << text.substr(0, 60);
  }
}

TEST(KTRHardDiskDeathTest, ValidatorRequiresALoopbackDisk) {
  EXPECT_DEATH(validateReplacement(LoopbackList()), "assertion failed");
}

}  // namespace
}  // namespace HardDisk
}  // namespace KTR
