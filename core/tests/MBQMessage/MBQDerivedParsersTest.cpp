#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "../MBQTestSupport.h"
#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {
namespace {

// A base kind with two derived kinds, registered like a technology library registers its own.
struct Shape {
  virtual ~Shape() = default;
  std::string label;
};

// A writer that declares no schema, for writers to hide what they declare; as a reader or a
// writer it reads and writes nothing.
struct NoSchema {
  const char* getStrNSID() const { return ""; }
  const char* getStrTypeID() const { return ""; }
  int getNSID() const { return 0; }
  int getTypeID() const { return 0; }
  template <class T>
  int operator()(const MBQMessageIterator&, T&) const { return 0; }
};

struct Circle : Shape {
  int radius = 0;
  struct Writer : NoSchema {
    const char* getStrNSID() const { return kTypesNamespace; }
    const char* getStrTypeID() const { return "circleType"; }
    int operator()(MBQMessageIterator& it, const Circle& c) const {
      return it.setValue(1010, c.label) || it.setValue(1024, c.radius) ? -1 : 0;
    }
  };
  struct Reader {
    int operator()(const MBQMessageIterator& it, Circle& c) const {
      return it.getValue(1010, c.label) || it.getValue(1024, c.radius) ? -1 : 0;
    }
  };
};

struct Square : Shape {
  int side = 0;
  // Declares its schema only through the core's numeric ids.
  struct Writer : NoSchema {
    int getNSID() const { return 292; }
    int getTypeID() const { return 122; }
    int operator()(MBQMessageIterator& it, const Square& s) const { return it.setValue(1704, s.side); }
  };
  struct Reader {
    int operator()(const MBQMessageIterator& it, Square& s) const { return it.getValue(1704, s.side); }
  };
};

struct Unregistered : Shape {};

MBQDerivedParserFactoryT<Circle, Shape> circleFactory;
MBQDerivedParserFactoryT<Square, Shape> squareFactory;

using ShapeFactory = MBQDerivedParserFactory<Shape>;

// A shape of a type no factory has.
const std::string kUnknown =
    "<m xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><shape xsi:type='hexType'/></m>";

std::shared_ptr<Shape> readShape(const std::string& text, bool useDefault = false, int* rc = nullptr) {
  std::shared_ptr<Shape> shape;
  int status = test::parsed(text).iterator()->getObject(shape, MBQReaderDerivedValid<Shape>(useDefault), "shape");
  if (rc) *rc = status;
  return shape;
}

TEST(MBQDerivedParsersTest, RegistryHoldsSchemaNamesAndRuntimeTypes) {
  EXPECT_EQ(2u, ShapeFactory::factoryInternalData().byName.size());
  EXPECT_EQ(&circleFactory, ShapeFactory::findByName(std::string(kTypesNamespace) + ":circleType"));
  EXPECT_EQ(&squareFactory, ShapeFactory::findByName(std::string(kCoreTypesNamespace) + ":envType"));
  EXPECT_EQ(&circleFactory, ShapeFactory::findByType(typeid(Circle)));
  EXPECT_EQ(nullptr, ShapeFactory::defaultFactory());
}

TEST(MBQDerivedParsersTest, UnknownOrMissingTypeFailsAndLeavesPointer) {
  int rc = 0;
  EXPECT_EQ(nullptr, readShape(kUnknown, true, &rc)) << "no default factory in this registry";
  EXPECT_EQ(-1, rc);
  EXPECT_EQ(nullptr, readShape("<m><shape/></m>", false, &rc));
  EXPECT_EQ(-1, rc);
  EXPECT_EQ(-1, MBQWriterDerived<Shape>()(*MBQMessage().iterator(), Unregistered()));
  EXPECT_EQ(-1, MBQWriterDerived<Shape>()(*MBQMessage().iterator(), std::shared_ptr<Shape>()));
}

TEST(MBQDerivedParsersTest, FailedReadLeavesCallersPointer) {
  MBQMessage message;
  auto out = message.iterator();
  out->addChildAndDescend("shape");
  ASSERT_EQ(0, MBQWriterDerived<Shape>()(*out, Circle()));
  auto it = test::reparsed(message).iterator();
  it->descend("shape");
  ASSERT_EQ(0, it->lookup(1024));
  it->remove();
  auto previous = std::make_shared<Square>();
  std::shared_ptr<Shape> shape = previous;
  EXPECT_EQ(-1, MBQReaderDerivedValid<Shape>(false)(*it, shape));
  EXPECT_EQ(previous, shape);
}

TEST(MBQDerivedParsersTest, WritingRecordsTheTypeSoReadingChoosesTheClass) {
  auto circle = std::make_shared<Circle>();
  circle->label = "c";
  circle->radius = 3;
  auto square = std::make_shared<Square>();
  square->side = 4;
  const std::vector<std::shared_ptr<Shape>> shapes{circle, square, std::make_shared<Circle>()};
  MBQMessage message;
  ASSERT_EQ(0, MBQWriterList(MBQWriterDerived<Shape>(), "shape")(*message.iterator(), shapes));
  std::vector<std::shared_ptr<Shape>> back;
  auto it = test::reparsed(message).iterator();
  ASSERT_EQ(0, MBQReaderList(MBQReaderDerivedValid<Shape>(false), "shape")(*it, back));
  ASSERT_EQ(3u, back.size());
  auto* circleBack = dynamic_cast<Circle*>(back[0].get());
  ASSERT_NE(nullptr, circleBack);
  EXPECT_EQ("c", circleBack->label);
  EXPECT_EQ(3, circleBack->radius);
  ASSERT_NE(nullptr, dynamic_cast<Square*>(back[1].get()));
  EXPECT_EQ(4, static_cast<Square&>(*back[1]).side);
  EXPECT_NE(nullptr, dynamic_cast<Circle*>(back[2].get()));
}

struct Fallback : Shape {
  struct Writer : NoSchema {
    const char* getStrNSID() const { return kTypesNamespace; }
    const char* getStrTypeID() const { return "fallbackType"; }
  };
  using Reader = NoSchema;
};

TEST(MBQDerivedParsersTest, DefaultFactoryReadsUnknownTypesOnlyWhenAllowed) {
  {
    MBQDerivedParserFactoryT<Fallback, Shape> fallback(true);
    EXPECT_NE(nullptr, dynamic_cast<Fallback*>(readShape(kUnknown, true).get()));
    EXPECT_EQ(nullptr, readShape(kUnknown, false));
  }
  EXPECT_EQ(nullptr, ShapeFactory::defaultFactory()) << "a destroyed factory leaves its registry";
  EXPECT_EQ(2u, ShapeFactory::factoryInternalData().byName.size());
}

struct NullStrings : Shape {
  struct Writer : NoSchema {
    const char* getStrNSID() const { return nullptr; }
    const char* getStrTypeID() const { return "x"; }
  };
  using Reader = NoSchema;
};
struct NullType : Shape {
  struct Writer : NoSchema {
    const char* getStrTypeID() const { return nullptr; }
  };
  using Reader = NoSchema;
};
struct SameName : Circle {};
struct CircleRenamed : Circle::Writer {
  const char* getStrTypeID() const { return "renamedType"; }
};
struct SecondDefault : Fallback {
  struct Writer : Fallback::Writer {
    const char* getStrTypeID() const { return "secondType"; }
  };
};

TEST(MBQDerivedParsersDeathTest, RegistrationErrorsAbortWithTheirLocation) {
  using SameTypeFactory = MBQDerivedParserFactoryT<Circle, Shape, std::string, Circle::Reader, CircleRenamed>;
  EXPECT_DEATH((MBQDerivedParserFactoryT<NullStrings, Shape>()), "MBQDerivedParsers:237");
  EXPECT_DEATH((MBQDerivedParserFactoryT<NullType, Shape>()), "MBQDerivedParsers:238");
  EXPECT_DEATH((MBQDerivedParserFactoryT<SameName, Shape>()), "MBQDerivedParsers:269");
  EXPECT_DEATH(SameTypeFactory(), "MBQDerivedParsers:271");
  auto twoDefaults = [] {
    MBQDerivedParserFactoryT<Fallback, Shape> first(true);
    MBQDerivedParserFactoryT<SecondDefault, Shape> second(true);
  };
  EXPECT_DEATH(twoDefaults(), "MBQDerivedParsers:274");
}

}  // namespace
}  // namespace MBQ
