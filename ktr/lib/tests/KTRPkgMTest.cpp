#include "KTRFunctionality/KTRPkgM.h"

#include <gtest/gtest.h>

#include "KTRRecordTesting.h"

#include <memory>
#include <string>
#include <vector>

#include "MBQMessage/MBQMessage.h"

namespace KTR {
namespace {

using Texts = std::vector<std::string>;

// Writes records under an element "r" and reads them back from the message's text, so every
// check goes through XML.
class KTRPkgMTest : public testing::RecordTest {
 protected:
  // Edits a copy of the text: `path` leads from "r" to the element to change, whose child
  // `id` is removed (value nullptr) or given the text `value`.
  std::string edited(const std::string& text, const std::vector<std::pair<int, int>>& path, int id,
                     const char* value) {
    MBQ::MBQMessage message;
    EXPECT_EQ(0, message.parse(text));
    auto it = message.iterator();
    EXPECT_EQ(0, it->descend("r"));
    for (const auto& step : path) {  // (id, how many siblings to skip)
      EXPECT_EQ(0, it->descend(step.first));
      for (int i = 0; i < step.second; ++i) EXPECT_EQ(0, it->next(step.first));
    }
    if (value == nullptr) {
      EXPECT_EQ(0, it->lookup(id)) << id;
      EXPECT_EQ(0, it->remove());
    } else {
      EXPECT_EQ(0, it->descend(id)) << id;
      EXPECT_EQ(0, it->setText(value));
    }
    return message.toString();
  }
  std::string without(const std::string& text, int id) { return edited(text, {}, id, nullptr); }
  static Texts childNames(const MBQ::MBQMessageIterator& it) {
    Texts names;
    if (it.descendFirst() == 0) {
      do names.push_back(it.getName());
      while (it.nextSibling() == 0);
      it.up();
    }
    return names;
  }
};

KTRPackageVersion fullVersion(const std::string& text = "4.2.46-34") {
  KTRPackageVersion version;
  version.setVersionText(text);
  version.setPrimaryFlag(true);
  version.setSecondaryFlag(true);
  version.setTemplates({KTRTemplate("centos-7-x86_64", "20240101"), KTRTemplate("centos-7-minimal")});
  return version;
}

// ---------------------------------------------------------------- packages

// ---------------------------------------------------------------- versions

TEST_F(KTRPkgMTest, LenientReaderToleratesWhatTheStrictOneRequires) {
  struct Case {
    int id;
    const char* value;  // nullptr: the element is removed
    int strict;
    int lenient;
  };
  const Case cases[] = {
      {1497, nullptr, -1, 0},
      {1498, nullptr, -1, 0},
      {1498, "perhaps", -1, 0},
      {1499, nullptr, 0, 0},
      {1499, "perhaps", 0, 0},
      {1509, nullptr, 0, 0},
  };
  const KTRPackageVersion version = fullVersion();
  const std::string text = write(version);
  for (const Case& c : cases) {
    const std::string changed = edited(text, {}, c.id, c.value);
    KTRPackageVersion strict;
    EXPECT_EQ(c.strict, read(changed, strict, KTRPackageVersion::Reader(false))) << c.id;
    EXPECT_EQ(c.strict, read(changed, strict, KTRPackageVersion::Reader())) << c.id << ": strict by default";

    KTRPackageVersion lenient;
    lenient.setVersionText("old");
    EXPECT_EQ(c.lenient, read(changed, lenient, KTRPackageVersion::Reader(true))) << c.id;
    EXPECT_EQ(c.id == 1497 ? "old" : version.getVersionText(), lenient.getVersionText()) << c.id;
    EXPECT_EQ(c.id != 1498, lenient.getPrimaryFlag()) << c.id << ": a failed flag keeps its value";
    EXPECT_EQ(c.id != 1499, lenient.getSecondaryFlag()) << c.id;
    EXPECT_EQ(c.id == 1509 ? std::vector<KTRTemplate>() : version.getTemplates(), lenient.getTemplates()) << c.id;
  }
}

TEST_F(KTRPkgMTest, BrokenTemplateEndsTheTemplateListOnly) {
  // The second template loses its name.
  const std::string changed = edited(write(fullVersion()), {{1509, 0}, {1295, 1}}, 1026, nullptr);
  KTRPackageVersion back;
  ASSERT_EQ(0, read(changed, back));
  EXPECT_EQ(std::vector<KTRTemplate>{KTRTemplate("centos-7-x86_64", "20240101")}, back.getTemplates());
}

// ---------------------------------------------------------------- package info

}  // namespace
}  // namespace KTR
