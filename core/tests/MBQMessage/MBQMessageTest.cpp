#include <gtest/gtest.h>

#include <string>

#include "../MBQTestSupport.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
namespace {

// The schema type the cursor's element declares; "(none)" when it declares none that reads.
std::string schemaType(const MBQMessageIterator& it) {
  std::string type;
  return it.getSchemaType(type) == 0 ? type : "(none)";
}

TEST(MBQMessageTest, MalformedXmlFailsWithLineAndColumnAndKeepsOldDocument) {
  for (const auto& bad : test::caseRows(__FILE__, "malformed")) {
    MBQMessage message("kept");
    EXPECT_EQ(-1, message.parse(bad.at(0))) << bad[0];
    EXPECT_EQ(0u, getErrorMessage().rfind(bad.at(1), 0)) << bad[0] << " -> " << getErrorMessage();
    EXPECT_EQ("kept", message.iterator()->getName());
  }
}

TEST(MBQMessageTest, ParsedTextSurvivesSerialisation) {
  const MBQMessage message = test::parsed("<r><a>1 &lt; 2</a><b><![CDATA[x&y]]></b><c/></r>");
  auto it = message.iterator();
  std::string a, b;
  EXPECT_EQ(0, it->getValue("a", a));
  EXPECT_EQ(0, it->getValue("b", b));
  EXPECT_EQ("1 < 2", a);
  EXPECT_EQ("x&y", b);
  EXPECT_EQ(message.toString(), test::reparsed(message).toString());
}

TEST(MBQMessageTest, ExternalEntitiesAreNeverLoaded) {
  MBQMessage message;
  const char* xxe = "<!DOCTYPE r [<!ENTITY e SYSTEM 'file:///etc/passwd'>]><r><v>&e;</v></r>";
  if (message.parse(xxe) == 0) {
    std::string value;
    message.iterator()->getValue("v", value);
    EXPECT_EQ(std::string::npos, value.find("root:")) << value;
  }
}

TEST(MBQMessageTest, CopiesAreDeep) {
  MBQMessage original;
  original.iterator()->setValue("v", 1);
  MBQMessage copy(original);
  copy.iterator()->setValue("w", 2);
  EXPECT_FALSE(original.iterator()->hasChild(std::string("w")));
  EXPECT_TRUE(copy.iterator()->hasChild(std::string("v")));
  MBQMessage assigned;
  assigned = copy;
  EXPECT_TRUE(assigned.iterator()->hasChild(std::string("w")));
}

TEST(MBQMessageTest, CursorOutlivesItsMessage) {
  std::unique_ptr<MBQMessageIterator> it;
  {
    MBQMessage message;
    it = message.iterator();
  }
  EXPECT_EQ(0, it->setValue("v", 1));
}

TEST(MBQMessageTest, NavigationStaysInsideTheCursorsTop) {
  MBQMessage message;
  auto it = message.iterator();
  it->addChildAndDescend("a");
  it->addChild("x");
  auto sub = it->clone();
  it->up();
  it->addChild("a");
  EXPECT_NE(0, sub->up()) << "a cloned cursor never climbs above its top";
  EXPECT_NE(0, sub->next("a")) << "nor moves to its top's siblings";
  EXPECT_EQ(0, sub->descend("x"));
  EXPECT_NE(0, it->up());
  EXPECT_NE(0, it->descend("missing"));
  EXPECT_EQ("message", it->getName());
  EXPECT_EQ(0, it->descend("a"));
  EXPECT_EQ(0, it->next("a"));
  EXPECT_NE(0, it->next("a"));
}

TEST(MBQMessageTest, RemoveDeletesTheElementFoundByLookup) {
  MBQMessage message;
  auto it = message.iterator();
  EXPECT_NE(0, it->remove()) << "nothing looked up yet";
  it->setValue("a", 1);
  it->setValue("b", 2);
  ASSERT_EQ(0, it->lookup("a"));
  EXPECT_EQ(0, it->remove());
  EXPECT_NE(0, it->remove()) << "the element is gone already";
  EXPECT_FALSE(it->hasChild(std::string("a")));
  EXPECT_TRUE(it->hasChild(std::string("b")));
  ASSERT_EQ(0, it->lookup("b"));
  ASSERT_EQ(0, it->descend("b"));
  EXPECT_NE(0, it->remove()) << "the cursor stands inside the element";
}

TEST(MBQMessageTest, SchemaTypeIsNamespaceQualifiedAndSurvivesImport) {
  MBQMessage source;
  auto it = source.iterator();
  it->addChildAndDescend("rec");
  ASSERT_EQ(0, it->setSchemaType("venv_configType", kTypesNamespace));
  it->addChildAndDescend("inner");
  ASSERT_EQ(0, it->setSchemaType(292, 122));
  EXPECT_EQ(std::string(kCoreTypesNamespace) + ":envType", schemaType(*it));

  // A target whose "ktr" prefix is bound to something else forces new prefixes on import.
  MBQMessage target = test::parsed("<t xmlns:ktr='urn:other' xmlns:mbq='urn:else'/>");
  ASSERT_EQ(0, target.iterator()->importChildren(*source.iterator()));
  auto in = test::reparsed(target).iterator();
  ASSERT_EQ(0, in->descend("rec"));
  EXPECT_EQ(std::string(kTypesNamespace) + ":venv_configType", schemaType(*in)) << target.toString();
  ASSERT_EQ(0, in->descend("inner"));
  EXPECT_EQ(std::string(kCoreTypesNamespace) + ":envType", schemaType(*in)) << target.toString();
}

TEST(MBQMessageTest, ImportKeepsATypeWhoseLocalPartHoldsAColon) {
  const MBQMessage source = test::parsed(
      "<m xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' xmlns:p='urn:p'><a xsi:type='p:b:c'/></m>");
  MBQMessage target;
  ASSERT_EQ(0, target.iterator()->importChildren(*source.iterator()));
  auto it = test::reparsed(target).iterator();
  ASSERT_EQ(0, it->descend("a"));
  EXPECT_EQ("urn:p:b:c", schemaType(*it));
}

TEST(MBQMessageTest, SchemaTypeFailuresAreReported) {
  MBQMessage message = test::parsed("<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
                                    "<a xsi:type='nope:t'/><b/><c xsi:type='plain'/></r>");
  auto it = message.iterator();
  ASSERT_EQ(0, it->descend("a"));
  EXPECT_EQ("(none)", schemaType(*it)) << "unbound prefix";
  it->up();
  ASSERT_EQ(0, it->descend("b"));
  EXPECT_EQ("(none)", schemaType(*it));
  EXPECT_NE(0, it->setSchemaType(292, 9999));
  EXPECT_NE(0, it->setSchemaType(777, 120));
  EXPECT_NE(0, it->setSchemaType("", "urn:x")) << "a type needs a name";
  it->up();
  ASSERT_EQ(0, it->descend("c"));
  EXPECT_EQ("plain", schemaType(*it));
}

TEST(MBQMessageTest, NamespacesAreDeclaredOnceAndResetByZero) {
  MBQMessage message;
  auto it = message.iterator();
  ASSERT_EQ(0, it->setNamespace(std::string(kTypesNamespace)));
  it->setValue("a", 1);
  it->addChildAndDescend("b");
  it->setValue("c", 2);
  EXPECT_EQ(0, it->setElementNamespace(0));  // b itself leaves the namespace; c stays in it
  it->up();
  ASSERT_EQ(0, it->setNamespace(0));
  it->setValue("d", 3);
  EXPECT_NE(0, it->setNamespace(12345));
  EXPECT_EQ(std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<message xmlns:ktr=\"") + kTypesNamespace +
                "\"><ktr:a>1</ktr:a><b><ktr:c>2</ktr:c></b><d>3</d></message>\n",
            message.toString());
}

TEST(MBQMessageTest, ChildOrderPlacesRankedChildrenBeforeUnranked) {
  struct Order : MBQChildOrder {
    int getPositionOfTheTag(const std::string& name) const override {
      static const char* names[] = {"first", "second", "third"};
      for (int i = 0; i < 3; ++i)
        if (name == names[i]) return i;
      return -1;
    }
  } order;
  MBQMessage message;
  auto it = message.iterator();
  it->setChildOrder(&order);
  for (const char* name : {"free", "third", "first", "other", "second"}) it->addChild(std::string(name));
  EXPECT_NE(std::string::npos, message.toString().find("<first/><second/><third/><free/><other/>"))
      << message.toString();
}

TEST(MBQMessageTest, WalksChildrenOfAnyNameInDocumentOrder) {
  const MBQMessage message = test::parsed("<r>text<a/><!-- c --><b/>tail<c/></r>");
  auto it = message.iterator();
  std::string names;
  ASSERT_EQ(0, it->descendFirst());
  do names += it->getName();
  while (it->nextSibling() == 0);
  EXPECT_EQ("abc", names);
  EXPECT_EQ(0, it->up());
  EXPECT_NE(0, it->nextSibling()) << "never beside the top";
  it->descend("b");
  EXPECT_NE(0, it->descendFirst());
}

TEST(MBQMessageTest, EmptyElementIgnoresWhitespace) {
  auto it = test::parsed("<r><a>\n  </a><b> x </b><c><d/></c></r>").iterator();
  for (const auto& [name, empty] : {std::pair<const char*, bool>{"a", true}, {"b", false}, {"c", false}}) {
    ASSERT_EQ(0, it->descend(name));
    EXPECT_EQ(empty, it->isEmptyElement()) << name;
    it->up();
  }
}

}  // namespace
}  // namespace MBQ
