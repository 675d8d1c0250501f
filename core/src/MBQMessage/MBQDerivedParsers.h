#pragma once

// Polymorphic records in messages. A base record class (a configuration, a container, a disk
// list...) has one registry of derived-parser factories, one factory per derived class. A
// factory knows the derived class's schema type name ("namespace URI:type name") and its
// run-time type name; reading picks the factory by the element's xsi:type, writing by the
// object's dynamic type, and the writer records the type again with the element.
//
// Registries live in the core message library, keyed by the base class, so there is exactly one
// per base in a process however many shared libraries register factories. Factories register in
// their constructor and leave in their destructor (so a library that is unloaded takes its
// factories with it). Registration is meant for static initialisers: the registries are not
// locked.

#include <map>
#include <memory>
#include <string>
#include <typeinfo>

#include "MBQCore/MBQError.h"
#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

class MBQDerivedParserFactoryBase;

struct MBQ_EXPORT MBQDerivedParserRegistry {
  std::map<std::string, MBQDerivedParserFactoryBase*> byName;
  std::map<std::string, MBQDerivedParserFactoryBase*> byType;
  MBQDerivedParserFactoryBase* defaultFactory = nullptr;
};

// The registry of one base class, created on first use. `baseTypeName` is typeid(Base).name().
MBQ_EXPORT MBQDerivedParserRegistry& derivedParserRegistry(const char* baseTypeName);

// The schema name a writer declares: the type name behind its namespace URI and ":", or, when
// its type name is empty, the texts the default map gives for its numeric ids.
MBQ_EXPORT std::string composeSchemaName(const char* strNS, const char* strType, int nsId, int typeId);

class MBQ_EXPORT MBQDerivedParserFactoryBase {
 public:
  virtual ~MBQDerivedParserFactoryBase();
  MBQDerivedParserFactoryBase(const MBQDerivedParserFactoryBase&) = delete;
  MBQDerivedParserFactoryBase& operator=(const MBQDerivedParserFactoryBase&) = delete;

  const std::string& schemaName() const { return schemaName_; }
  const std::string& runtimeTypeName() const { return runtimeTypeName_; }

 protected:
  MBQDerivedParserFactoryBase() = default;
  // Registers this factory. Aborts when the writer's strings are null, when the schema name or
  // the run-time type is already registered, or when a second default is asked for.
  void addFactory(MBQDerivedParserRegistry& registry, bool isDefault, const char* runtimeTypeName,
                  const char* strNS, const char* strType, int nsId, int typeId);

 private:
  MBQDerivedParserRegistry* registry_ = nullptr;
  std::string schemaName_;
  std::string runtimeTypeName_;
};

template <class Base, class Key = std::string>
class MBQDerivedParserFactory : public MBQDerivedParserFactoryBase {
 public:
  // A new, default-constructed derived object.
  virtual Base* create() const = 0;
  // Reads the current element into `object`, which must be of this factory's class.
  virtual int read(const MBQMessageIterator& it, Base& object) const = 0;
  // Writes `object` (of this factory's class) in place, with its schema type.
  virtual int write(MBQMessageIterator& it, const Base& object) const = 0;

  static MBQDerivedParserRegistry& factoryInternalData() {
    return derivedParserRegistry(typeid(Base).name());
  }
  static const MBQDerivedParserFactory* findByName(const Key& schemaName) {
    auto& byName = factoryInternalData().byName;
    auto found = byName.find(schemaName);
    return found == byName.end() ? nullptr : static_cast<const MBQDerivedParserFactory*>(found->second);
  }
  static const MBQDerivedParserFactory* findByType(const std::type_info& type) {
    auto& byType = factoryInternalData().byType;
    auto found = byType.find(type.name());
    return found == byType.end() ? nullptr : static_cast<const MBQDerivedParserFactory*>(found->second);
  }
  static const MBQDerivedParserFactory* defaultFactory() {
    return static_cast<const MBQDerivedParserFactory*>(factoryInternalData().defaultFactory);
  }
};

// Pointer-data adapters: a derived record's reader or writer applied behind a base reference.
template <class Data, class Reader>
struct MBQReaderPointerDataT {
  Reader reader;
  template <class Base>
  int operator()(const MBQMessageIterator& it, Base& object) const {
    return reader(it, static_cast<Data&>(object));
  }
};
template <class Data, class Writer>
struct MBQWriterPointerDataT {
  Writer writer;
  template <class Base>
  int operator()(MBQMessageIterator& it, const Base& object) const {
    return putObjectInternal(it, static_cast<const Data&>(object), writer);
  }
};

// The factory of one derived class. TWriter must declare a schema (see MBQCodec.h).
template <class Data, class Base, class Key = std::string, class TReader = typename Data::Reader,
          class TWriter = typename Data::Writer>
class MBQDerivedParserFactoryT : public MBQDerivedParserFactory<Base, Key> {
 public:
  explicit MBQDerivedParserFactoryT(bool isDefault = false) {
    const TWriter& writer = writer_.writer;
    this->addFactory(MBQDerivedParserFactory<Base, Key>::factoryInternalData(), isDefault,
                     typeid(Data).name(), writer.getStrNSID(), writer.getStrTypeID(),
                     writer.getNSID(), writer.getTypeID());
  }
  Base* create() const override { return new Data(); }
  int read(const MBQMessageIterator& it, Base& object) const override { return reader_(it, object); }
  int write(MBQMessageIterator& it, const Base& object) const override { return writer_(it, object); }

 private:
  MBQReaderPointerDataT<Data, TReader> reader_{};
  MBQWriterPointerDataT<Data, TWriter> writer_{};
};

// Reads a polymorphic record into a shared pointer to its base: the class is chosen by the
// element's schema type; when no factory has that name, the base's default factory is used if
// `useDefault` is set and one exists, else the read fails with -1. On failure the caller's
// pointer is left as it was.
template <class Base>
struct MBQReaderDerived {
  bool useDefault = false;
  int operator()(const MBQMessageIterator& it, std::shared_ptr<Base>& out) const {
    using Factory = MBQDerivedParserFactory<Base>;
    std::string schemaName;
    const Factory* factory = nullptr;
    if (it.getSchemaType(schemaName) == 0) factory = Factory::findByName(schemaName);
    if (factory == nullptr && useDefault) factory = Factory::defaultFactory();
    if (factory == nullptr) {
      setErrorMessage("no reader for schema type '%s'", schemaName.c_str());
      return -1;
    }
    std::shared_ptr<Base> object(factory->create());
    int rc = factory->read(it, *object);
    if (rc == 0) out = std::move(object);
    return rc;
  }
};

template <class Base>
MBQReaderDerived<Base> MBQReaderDerivedValid(bool useDefault) {
  return MBQReaderDerived<Base>{useDefault};
}

// Writes a polymorphic record in place through the factory of its dynamic type, which records
// the schema type with the element. An object whose class has no factory fails with -1.
template <class Base>
int MBQDerivedWrite(MBQMessageIterator& it, const Base& object) {
  const auto* factory = MBQDerivedParserFactory<Base>::findByType(typeid(object));
  if (factory == nullptr) {
    setErrorMessage("no message writer is registered for %s", typeid(object).name());
    return -1;
  }
  return factory->write(it, object);
}

template <class Base>
struct MBQWriterDerived {
  int operator()(MBQMessageIterator& it, const Base& object) const { return MBQDerivedWrite<Base>(it, object); }
  int operator()(MBQMessageIterator& it, const std::shared_ptr<Base>& object) const {
    return object ? MBQDerivedWrite<Base>(it, *object) : -1;
  }
  int operator()(MBQMessageIterator& it, const std::shared_ptr<const Base>& object) const {
    return object ? MBQDerivedWrite<Base>(it, *object) : -1;
  }
};

}  // namespace MBQ
