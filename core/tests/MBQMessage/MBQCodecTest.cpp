#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQTagTable.h"

namespace MBQ {
namespace {

// A small record with a schema, composed from the codec families the way library records are.
struct Port {
  std::string name;
  int number = 0;
  MBQOptionalProperty<std::string> note;

  struct Writer {
    const char* getStrNSID() const { return kTypesNamespace; }
    const char* getStrTypeID() const { return "portType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQMessageIterator& it, const Port& p) const {
      if (it.setValue(1010, p.name) != 0) return -1;
      if (it.setValue(1704, p.number) != 0) return -1;
      return MBQWriterID(MBQDefaultWriter<MBQOptionalProperty<std::string>>(), "note")(it, p.note);
    }
  };
  struct Reader {
    int operator()(const MBQMessageIterator& it, Port& p) const {
      if (it.getValue(1010, p.name) != 0) return -1;
      if (it.getValue(1704, p.number) != 0) return -1;
      return MBQReaderID(MBQDefaultReader<MBQOptionalProperty<std::string>>(), "note", MBQReaderOptional)(it, p.note);
    }
  };
  bool operator==(const Port& o) const { return name == o.name && number == o.number && note == o.note; }
};

class MBQCodecTest : public ::testing::Test {
 protected:
  MBQMessage message_;
  std::unique_ptr<MBQMessageIterator> it_ = message_.iterator();
};

TEST_F(MBQCodecTest, ScalarValuesRoundTripByIdAndName) {
  ASSERT_EQ(0, it_->setValue(1010, std::string("web & <db>")));
  ASSERT_EQ(0, it_->setValue(1704, -42));
  ASSERT_EQ(0, it_->setValue("big", 9007199254740993LL));
  ASSERT_EQ(0, it_->setValue("flag", true));
  ASSERT_EQ(0, it_->setValue("ratio", 0.1));
  auto in = test::reparsed(message_).iterator();
  const auto expectRead = [&in](auto where, auto expected) {
    decltype(expected) value{};
    EXPECT_EQ(0, in->getValue(where, value)) << where;
    EXPECT_EQ(expected, value) << where;
  };
  expectRead(1010, std::string("web & <db>"));
  expectRead(1704, -42);
  expectRead("big", 9007199254740993LL);
  expectRead("flag", true);
  expectRead("ratio", 0.1);
}

TEST_F(MBQCodecTest, FailedValueReadLeavesTargetUnchanged) {
  ASSERT_EQ(0, it_->setValue("word", std::string("twelve")));
  ASSERT_EQ(0, it_->setValue("huge", std::string("4294967296")));
  int value = 7;
  EXPECT_NE(0, it_->getValue("word", value));
  EXPECT_NE(0, it_->getValue("huge", value));
  EXPECT_NE(0, it_->getValue("absent", value));
  EXPECT_EQ(7, value);
}

TEST_F(MBQCodecTest, OptionalListReaderOnNoItemsSucceedsAndRequiredFails) {
  std::vector<std::string> items{"kept"};
  EXPECT_EQ(0, MBQReaderList(MBQReaderValue<std::string>(), 1323, MBQReaderOptional)(*it_, items));
  EXPECT_EQ(std::vector<std::string>{"kept"}, items);
  std::vector<std::string> empty;
  EXPECT_EQ(-1, MBQReaderList(MBQReaderValue<std::string>(), 1323)(*it_, empty));
  EXPECT_TRUE(empty.empty());
}

TEST_F(MBQCodecTest, ListsAndSetsRoundTripInOrder) {
  const std::vector<std::string> list{"b", "a", "b"};
  const std::set<int> numbers{3, 1, 2};
  ASSERT_EQ(0, MBQWriterList(MBQWriterValue<std::string>(), 1323)(*it_, list));
  ASSERT_EQ(0, MBQWriterData(numbers, "n")(*it_, numbers));
  auto in = test::reparsed(message_).iterator();
  std::vector<std::string> listBack;
  std::set<int> numbersBack;
  EXPECT_EQ(0, MBQReaderList(MBQReaderValue<std::string>(), 1323)(*in, listBack));
  EXPECT_EQ(0, MBQReaderData(numbersBack, "n")(*in, numbersBack));
  EXPECT_EQ(list, listBack);
  EXPECT_EQ(numbers, numbersBack);
}

TEST_F(MBQCodecTest, ListReadStopsAtFirstBadItemKeepingEarlierOnes) {
  for (const char* text : {"1", "2", "x", "4"}) {
    it_->addChildAndDescend("n");
    it_->setText(text);
    it_->up();
  }
  std::vector<int> numbers;
  EXPECT_EQ(-1, MBQReaderList(MBQReaderValue<int>(), "n")(*it_, numbers));
  EXPECT_EQ((std::vector<int>{1, 2}), numbers);
  EXPECT_EQ("message", it_->getName()) << "the reader must leave the cursor where it found it";
}

TEST_F(MBQCodecTest, PutObjectTwiceLeavesOneChild) {
  Port port{"ssh", 22, {}};
  ASSERT_EQ(0, it_->putObject(port, Port::Writer(), 1652));
  port.number = 2222;
  ASSERT_EQ(0, it_->putObject(port, Port::Writer(), 1652));
  auto in = test::reparsed(message_).iterator();
  ASSERT_EQ(0, in->descend(1652));
  EXPECT_NE(0, in->next(1652)) << message_.toString();
  in->up();
  Port back;
  EXPECT_EQ(0, in->getObject(back, Port::Reader(), 1652));
  EXPECT_EQ(port, back);
}

// A missing object fails only a required read; a missing child of it fails, keeping what was read.
TEST_F(MBQCodecTest, MissingObjectOrChildLeavesWhatWasReadBefore) {
  Port port{"kept", 1, {}};
  EXPECT_EQ(0, it_->getObject(port, Port::Reader(), 1652));
  EXPECT_EQ("kept", port.name);
  EXPECT_EQ(-1, MBQReaderID(Port::Reader(), 1652)(*it_, port));
  it_->addChildAndDescend(1652);
  it_->setValue(1010, std::string("half"));
  it_->up();
  port = Port{"old", 5, {}};
  EXPECT_EQ(-1, it_->getObject(port, Port::Reader(), 1652));
  EXPECT_EQ("half", port.name);
  EXPECT_EQ(5, port.number);
}

TEST_F(MBQCodecTest, TypedWriteRecordsSchemaTypeAndNamespace) {
  ASSERT_EQ(0, it_->putObject(Port{"http", 80, std::string("web")}, Port::Writer(), 1652));
  auto in = test::reparsed(message_).iterator();
  ASSERT_EQ(0, in->descend(1652));
  std::string type;
  ASSERT_EQ(0, in->getSchemaType(type));
  EXPECT_EQ(std::string(kTypesNamespace) + ":portType", type);
  EXPECT_NE(std::string::npos, message_.toString().find(std::string("<ktr:") + tagName(1010) + ">http</ktr:")) << message_.toString();
  EXPECT_EQ("", it_->getNamespace()) << "the typed write must not leak its namespace";
}

TEST_F(MBQCodecTest, OptionalPropertyIsWrittenOnlyWhenSpecifiedAndMarkedOnRead) {
  MBQOptionalProperty<int> unset;
  MBQOptionalProperty<int> set(5);
  ASSERT_EQ(0, it_->putObj(unset, "unset"));
  ASSERT_EQ(0, it_->putObj(set, "set"));
  EXPECT_FALSE(it_->hasChild(std::string("unset")));
  MBQOptionalProperty<int> a(9), b;
  EXPECT_EQ(0, it_->getObj(a, "unset"));
  EXPECT_EQ(0, it_->getObj(b, "set"));
  EXPECT_EQ(unset, a);
  EXPECT_EQ(set, b);
  it_->setValue("bad", std::string("x"));
  EXPECT_EQ(0, it_->getObj(b, "bad")) << "an optional read never fails";
  EXPECT_FALSE(b.isSpecified());
}

TEST_F(MBQCodecTest, WriterIdSetsItemNamespace) {
  MBQWriterIDT<int, MBQWriterValue<int>, 292> writer{{}, 1704};
  ASSERT_EQ(0, writer(*it_, 1));
  EXPECT_NE(std::string::npos, message_.toString().find(std::string("<mbq:") + tagName(1704))) << message_.toString();
}

TEST(MBQCodecDeathTest, EmptyIdsAndMissingSchemaStringsAbort) {
  MBQMessage message;
  auto it = message.iterator();
  int value = 0;
  EXPECT_DEATH(MBQReaderID(MBQReaderValue<int>(), 0)(*it, value), "MBQMessageIterator:752");
  EXPECT_DEATH(MBQWriterID(MBQWriterValue<int>(), 0)(*it, value), "MBQMessageIterator:671");
  struct NullNamespace {
    const char* getStrNSID() const { return nullptr; }
    const char* getStrTypeID() const { return "t"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQMessageIterator&, const int&) const { return 0; }
  };
  struct NullType : NullNamespace {
    const char* getStrNSID() const { return ""; }
    const char* getStrTypeID() const { return nullptr; }
  };
  EXPECT_DEATH(it->putObject(value, NullNamespace()), "MBQMessageIterator:853");
  EXPECT_DEATH(it->putObject(value, NullType()), "MBQMessageIterator:854");
  EXPECT_DEATH(it->addChild(4242), "not in the tag table|MBQXmlMessageIterator");
}

}  // namespace
}  // namespace MBQ
