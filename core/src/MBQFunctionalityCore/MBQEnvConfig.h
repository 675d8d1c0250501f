#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "MBQCore/MBQExport.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQFunctionalityCore/MBQQoS.h"
#include "MBQMessage/MBQCoreValueCodec.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTagTable.h"
#include "MBQMessage/MBQNamespaces.h"

namespace MBQ {

enum EnvConfigType { EnvConfigPlain = 0, EnvConfigVirtual = 1 };

// The operating system a container runs: its platform ("linux", "windows"...), name and
// version. Children "platform", "name", "version", each optional.
struct MBQ_EXPORT MBQOsDescription {
  MBQOptionalProperty<std::string> platform;
  MBQOptionalProperty<std::string> name;
  MBQOptionalProperty<std::string> version;

  bool operator==(const MBQOsDescription& o) const {
    return platform == o.platform && name == o.name && version == o.version;
  }

  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQOsDescription& os) const;
  };
  struct MBQ_EXPORT Writer {
    int operator()(MBQMessageIterator& it, const MBQOsDescription& os) const;
  };
};

// A container's configuration as a typed view over a message subtree: the record keeps no
// fields of its own; every getter reads an element of the subtree and every setter rewrites
// it, so the subtree is always the record's message form.
//
// The subtree is either the configuration's own (created by initMsg(), owned) or an element of
// another message that the configuration was built on (the message must outlive it). Copies
// are deep and always own their subtree.
//
// Getters return -1 when there is no subtree and leave the property untouched; otherwise they
// read the element, mark the property specified exactly when the read succeeded, and return 0.
// Setters call initMsg(), remove the old element(s), and write the property only when it is
// specified (so setting an unspecified property deletes it); they return 0.
//
// New children are placed in the configuration's element order (getPositionOfTheTag).
class MBQ_EXPORT MBQEnvConfig : public MBQChildOrder {
 public:
  MBQEnvConfig();
  // A view over the subtree under the cursor's current element (not owned).
  explicit MBQEnvConfig(const MBQMessageIterator* it);
  MBQEnvConfig(const MBQEnvConfig& other);
  MBQEnvConfig& operator=(const MBQEnvConfig& other);
  ~MBQEnvConfig() override;

  // Creates an empty own subtree when there is none yet. Returns 0.
  int initMsg();
  bool hasMsg() const { return it_ != nullptr; }
  // The cursor over the subtree, or nullptr before initMsg(). Stays valid as long as the
  // configuration.
  MBQMessageIterator* msg() { return it_.get(); }
  const MBQMessageIterator* msg() const { return it_.get(); }

  // The rank of an element name in the configuration's element order; -1 when unranked
  // (unranked elements follow the ranked ones).
  int getPositionOfTheTag(const std::string& name) const override;

  // --- generic properties
  int getName(MBQOptionalProperty<std::string>& name) const;
  int setName(const MBQOptionalProperty<std::string>& name);
  int getHostname(MBQOptionalProperty<std::string>& hostname) const;
  int setHostname(const MBQOptionalProperty<std::string>& hostname);
  int getDescription(MBQOptionalProperty<std::string>& description) const;
  int setDescription(const MBQOptionalProperty<std::string>& description);
  int getAddresses(MBQOptionalProperty<std::vector<MBQIPAddress>>& addresses) const;
  int setAddresses(const MBQOptionalProperty<std::vector<MBQIPAddress>>& addresses);
  int getNameservers(MBQOptionalProperty<std::vector<MBQIPAddress>>& nameservers) const;
  int setNameservers(const MBQOptionalProperty<std::vector<MBQIPAddress>>& nameservers);
  int getSearchDomains(MBQOptionalProperty<std::set<std::string>>& domains) const;
  int setSearchDomains(const MBQOptionalProperty<std::set<std::string>>& domains);
  int getOsDescription(MBQOptionalProperty<MBQOsDescription>& os) const;
  int setOsDescription(const MBQOptionalProperty<MBQOsDescription>& os);
  int getArchitecture(MBQOptionalProperty<std::string>& architecture) const;
  int setArchitecture(const MBQOptionalProperty<std::string>& architecture);
  int getType(MBQOptionalProperty<int>& type) const;
  int setType(const MBQOptionalProperty<int>& type);
  int getDisabled(MBQOptionalProperty<bool>& disabled) const;
  int setDisabled(const MBQOptionalProperty<bool>& disabled);

  // Resource values, one qos_value element each.
  int getQoSes(MBQOptionalProperty<std::set<MBQQoS>>& qoses) const;
  int setQoSes(const MBQOptionalProperty<std::set<MBQQoS>>& qoses);
  // The resource with that id: 0 with `qos` specified when present, 0 with it unspecified when
  // absent, -1 without a subtree or when the resources do not read.
  int getQoS(const std::string& id, MBQOptionalProperty<MBQQoS>& qos) const;

  // --- the building blocks of typed accessors

  // Sets a namespace on a cursor for its lifetime when the given one is non-empty (a URI, or a
  // numeric id), and resets it to none on destruction if it did.
  class MBQ_EXPORT NamespaceSetterGuard {
   public:
    NamespaceSetterGuard(MBQMessageIterator& it, const char* uri);
    NamespaceSetterGuard(MBQMessageIterator& it, const std::string& uri);
    NamespaceSetterGuard(MBQMessageIterator& it, int namespaceId);
    ~NamespaceSetterGuard();
    NamespaceSetterGuard(const NamespaceSetterGuard&) = delete;
    NamespaceSetterGuard& operator=(const NamespaceSetterGuard&) = delete;

   private:
    MBQMessageIterator& it_;
    bool set_ = false;
  };

  // One scalar or record element, by tag id or name.
  template <class T, class Key>
  int getValueAttr(MBQOptionalProperty<T>& property, const Key& key) const;
  template <class T, class Key>
  int setValueAttr(const MBQOptionalProperty<T>& property, const Key& key, const char* namespaceUri = "");

  // A list of records, one element per item, in order; an empty specified list is one empty
  // element. Reading appends to the container (through its back inserter), marks the property
  // unspecified when no element exists, and ends successfully at an empty element.
  template <class C, class Key, class ItemReader = MBQDefaultReader<typename C::value_type>>
  int getQoSLikeListExT(MBQOptionalProperty<C>& property, const Key& key, const ItemReader& reader = ItemReader()) const;
  template <class C, class Key, class ItemWriter = MBQDefaultWriter<typename C::value_type>>
  int setQoSLikeListExT(const MBQOptionalProperty<C>& property, const Key& key, const std::string& namespaceUri,
                        const ItemWriter& writer = ItemWriter());
  // The same with the namespace URI as a character string.
  template <class C, class Key>
  int setQoSLikeListT(const MBQOptionalProperty<C>& property, const Key& key, const char* namespaceUri);

  // A set of strings, one string element per item.
  template <class Key>
  int getStringListAttr(MBQOptionalProperty<std::set<std::string>>& property, const Key& key) const;
  template <class Key>
  int setStringListAttr(const MBQOptionalProperty<std::set<std::string>>& property, const Key& key,
                        const char* namespaceUri = "");

  // A map of strings under repeated elements `name`, each item's key under key (optional)
  // and value under value (required).
  int getFeatureList(MBQOptionalProperty<std::map<std::string, std::string>>& property, const std::string& name) const;
  int setFeatureList(const MBQOptionalProperty<std::map<std::string, std::string>>& property, const std::string& name);

  // Removes every child with the id or name.
  template <class Key>
  void removeAll(const Key& key);

  // The configuration's subtree written in place (a copy of every child) and read back (the
  // subtree replaced by a copy of the element's children). Schema: core namespace, type 120.
  struct MBQ_EXPORT Reader {
    int operator()(const MBQMessageIterator& it, MBQEnvConfig& config) const;
  };
  struct MBQ_EXPORT Writer {
    const char* getStrNSID() const { return ""; }
    const char* getStrTypeID() const { return ""; }
    int getNSID() const { return kCoreTypesNamespaceId; }
    int getTypeID() const { return 120; }
    int operator()(MBQMessageIterator& it, const MBQEnvConfig& config) const;
  };

 private:
  std::shared_ptr<MBQMessage> own_;
  std::unique_ptr<MBQMessageIterator> it_;
};

// The technology (virtual) part of a container's configuration; technology libraries derive
// their configuration record from it.
class MBQ_EXPORT MBQVEnvConfig : public MBQEnvConfig {
 public:
  MBQVEnvConfig() = default;
  explicit MBQVEnvConfig(const MBQMessageIterator* it) : MBQEnvConfig(it) {}
  explicit MBQVEnvConfig(const MBQEnvConfig& config) : MBQEnvConfig(config) {}

  struct MBQ_EXPORT Writer : MBQEnvConfig::Writer {
    int getTypeID() const { return 121; }
  };
};

// ---------------------------------------------------------------- template definitions

template <class T, class Key>
int MBQEnvConfig::getValueAttr(MBQOptionalProperty<T>& property, const Key& key) const {
  if (!it_) return -1;
  property.specify(MBQReaderID(MBQDefaultReader<T>(), key)(*it_, property.get()) == 0);
  return 0;
}

template <class T, class Key>
int MBQEnvConfig::setValueAttr(const MBQOptionalProperty<T>& property, const Key& key, const char* namespaceUri) {
  initMsg();
  if (it_->lookup(key) == 0) it_->remove();
  if (!property.isSpecified()) return 0;
  NamespaceSetterGuard guard(*it_, namespaceUri);
  MBQWriterID(MBQDefaultWriter<T>(), key)(*it_, property.get());
  return 0;
}

template <class Key>
void MBQEnvConfig::removeAll(const Key& key) {
  while (it_->lookup(key) == 0 && it_->remove() == 0) {
  }
}

template <class C, class Key, class ItemReader>
int MBQEnvConfig::getQoSLikeListExT(MBQOptionalProperty<C>& property, const Key& key, const ItemReader& reader) const {
  if (!it_) return -1;
  property.specify(false);
  if (it_->descend(key) != 0) return 0;
  property.specify(true);
  auto out = std::inserter(property.get(), property.get().end());
  int rc = 0;
  do {
    typename C::value_type item{};
    if (reader(*it_, item) == 0) {
      *out++ = std::move(item);
    } else {
      // An empty element is the empty-list marker and ends the list; anything else is broken.
      rc = it_->isEmptyElement() ? 0 : -1;
      break;
    }
  } while (it_->next(key) == 0);
  it_->up();
  return rc;
}

template <class C, class Key, class ItemWriter>
int MBQEnvConfig::setQoSLikeListExT(const MBQOptionalProperty<C>& property, const Key& key,
                                    const std::string& namespaceUri, const ItemWriter& writer) {
  initMsg();
  removeAll(key);
  if (!property.isSpecified()) return 0;
  NamespaceSetterGuard guard(*it_, namespaceUri);
  if (property.get().empty()) return it_->addChild(key);
  for (const auto& item : property.get()) {
    if (it_->addChildAndDescend(key) != 0) return -1;
    int rc = putObjectInternal(*it_, item, writer);
    it_->up();
    if (rc != 0) return rc;
  }
  return 0;
}

template <class C, class Key>
int MBQEnvConfig::setQoSLikeListT(const MBQOptionalProperty<C>& property, const Key& key, const char* namespaceUri) {
  return setQoSLikeListExT(property, key, std::string(namespaceUri ? namespaceUri : ""));
}

template <class Key>
int MBQEnvConfig::getStringListAttr(MBQOptionalProperty<std::set<std::string>>& property, const Key& key) const {
  if (!it_) return -1;
  property.get().clear();
  property.specify(MBQReaderSet(MBQReaderValue<std::string>(), key)(*it_, property.get()) == 0);
  return 0;
}

template <class Key>
int MBQEnvConfig::setStringListAttr(const MBQOptionalProperty<std::set<std::string>>& property, const Key& key,
                                    const char* namespaceUri) {
  initMsg();
  removeAll(key);
  if (!property.isSpecified()) return 0;
  NamespaceSetterGuard guard(*it_, namespaceUri);
  return MBQWriterList(MBQWriterValue<std::string>(), key)(*it_, property.get());
}

}  // namespace MBQ
