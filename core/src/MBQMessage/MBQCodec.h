#pragma once

// The codec: small reader and writer function objects that compose into the reader and writer
// of any record. A reader is `int operator()(MBQMessageIterator const&, T&) const`, a writer
// `int operator()(MBQMessageIterator&, T const&) const`; both return 0 on success and -1 (or
// the first inner error) on failure. Readers and writers run "in place" on the cursor's current
// element; the by-id families descend into a child first.
//
// This header is included by MBQMessageIterator.h; include that one.

#include <iterator>
#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"
#include "MBQMessage/MBQOptionalProperty.h"
#include "MBQMessage/MBQValueText.h"

namespace MBQ {

class MBQMessageIterator;

// Reader flags: whether a missing element is an error.
enum MBQReaderFlags { MBQReaderRequired = 0, MBQReaderOptional = 1 };

namespace codec_detail {

constexpr const char* kIteratorPath = "core/src/MBQMessage/MBQMessageIterator";

inline bool keyIsEmpty(int id) { return id == 0; }
inline bool keyIsEmpty(const std::string& name) { return name.empty(); }

// Why a read failed, said once here for every record: the error text names the element path
// from the record down ("release: version_text: missing") and what was wrong at its end. Each
// by-id step clears the text before its inner read and prefixes its element's name when that
// read fails, so a reader that fails without a word still leaves "NAME: invalid".
MBQ_EXPORT void noteMissingElement(int id);
MBQ_EXPORT void noteMissingElement(const std::string& name);
MBQ_EXPORT void noteFailedElement(int id);
MBQ_EXPORT void noteFailedElement(const std::string& name);
MBQ_EXPORT void noteBadValue(const std::string& text, const char* kind);

template <class T>
const char* valueKind() {
  if constexpr (std::is_same<T, bool>::value) return "boolean (0, 1, false or true)";
  else if constexpr (std::is_floating_point<T>::value) return "number";
  else if constexpr (std::is_integral<T>::value && std::is_signed<T>::value)
    return sizeof(T) == 8 ? "64-bit integer" : sizeof(T) == 4 ? "32-bit integer" : "small integer";
  else if constexpr (std::is_integral<T>::value)
    return sizeof(T) == 8 ? "unsigned 64-bit integer" : sizeof(T) == 4 ? "unsigned 32-bit integer" : "small unsigned integer";
  else return "value";
}

// Writers skip an unspecified optional property; readers that find no element mark it so.
template <class T>
bool shouldWrite(const T&) { return true; }
template <class T>
bool shouldWrite(const MBQOptionalProperty<T>& p) { return p.isSpecified(); }
template <class T>
void onMissing(T&) {}
template <class T>
void onMissing(MBQOptionalProperty<T>& p) { p.specify(false); }

// A writer "declares a schema" when it reports namespace and type through getStrNSID(),
// getStrTypeID(), getNSID() and getTypeID().
template <class W, class = void>
struct HasSchema : std::false_type {};
template <class W>
struct HasSchema<W, std::void_t<decltype(std::declval<const W&>().getStrTypeID()),
                                decltype(std::declval<const W&>().getStrNSID()),
                                decltype(std::declval<const W&>().getNSID()),
                                decltype(std::declval<const W&>().getTypeID())>>
    : std::true_type {};

}  // namespace codec_detail

// ---------------------------------------------------------------- scalars in place

// Reads the current element's text as T.
template <class T>
struct MBQReaderValue {
  int operator()(const MBQMessageIterator& it, T& value) const;
};
// Replaces the current element's text with T's text.
template <class T>
struct MBQWriterValue {
  int operator()(MBQMessageIterator& it, const T& value) const;
};

// An optional property in place: reads the value and marks it specified exactly when the read
// succeeded (never fails); writes only a specified value.
template <class Reader>
struct MBQReaderOptionalT {
  Reader reader;
  template <class T>
  int operator()(const MBQMessageIterator& it, MBQOptionalProperty<T>& p) const {
    p.specify(reader(it, p.get()) == 0);
    return 0;
  }
};
template <class Writer>
struct MBQWriterOptionalT {
  Writer writer;
  template <class T>
  int operator()(MBQMessageIterator& it, const MBQOptionalProperty<T>& p) const {
    return p.isSpecified() ? writer(it, p.get()) : 0;
  }
};

// ---------------------------------------------------------------- default reader and writer

// The default codec of a type: scalars read and write their text; records use their nested
// Reader and Writer; optional properties wrap their value's codec.
template <class T, class = void>
struct MBQDefaultCodec {
  using Reader = typename T::Reader;
  using Writer = typename T::Writer;
};
template <class T>
struct MBQDefaultCodec<T, std::enable_if_t<MBQIsTextValue<T>::value>> {
  using Reader = MBQReaderValue<T>;
  using Writer = MBQWriterValue<T>;
};
template <class T>
struct MBQDefaultCodec<MBQOptionalProperty<T>> {
  using Reader = MBQReaderOptionalT<typename MBQDefaultCodec<T>::Reader>;
  using Writer = MBQWriterOptionalT<typename MBQDefaultCodec<T>::Writer>;
};
template <class T>
using MBQDefaultReader = typename MBQDefaultCodec<T>::Reader;
template <class T>
using MBQDefaultWriter = typename MBQDefaultCodec<T>::Writer;

// ---------------------------------------------------------------- typed write in place

// Runs a writer on the current element. When the writer declares a schema, the element gets
// the writer's schema type and the elements the writer adds get its namespace: a numeric
// namespace id wins over the URI, and a numeric type id above 100 over the type name.
template <class T, class Writer>
int putObjectInternal(MBQMessageIterator& it, const T& object, const Writer& writer);

// ---------------------------------------------------------------- by id

template <class ID, class Reader>
struct MBQReaderIDT {
  Reader reader;
  ID id;
  int flags;
  template <class T>
  int operator()(const MBQMessageIterator& it, T& value) const;
};

template <class ID, class Writer, int itemNSType = 0>
struct MBQWriterIDT {
  Writer writer;
  ID id;
  template <class T>
  int operator()(MBQMessageIterator& it, const T& value) const;
};

// ---------------------------------------------------------------- lists, sets, maps

// Item readers: read one item into a fresh value, then append it (vector, list) or insert it
// (set). A failed read inserts nothing.
template <class Reader>
struct MBQReaderListDataT {
  Reader reader;
  template <class C>
  int operator()(const MBQMessageIterator& it, C& container) const {
    typename C::value_type item{};
    int rc = reader(it, item);
    if (rc == 0) container.push_back(std::move(item));
    return rc;
  }
};
template <class Reader>
struct MBQReaderSetDataT {
  Reader reader;
  template <class C>
  int operator()(const MBQMessageIterator& it, C& container) const {
    typename C::value_type item{};
    int rc = reader(it, item);
    if (rc == 0) container.insert(std::move(item));
    return rc;
  }
};
// One map item: the key reader, then the value reader (each normally a by-id reader inside
// the item). On success the pair is inserted; an existing key keeps its first value.
template <class KeyReader, class ValueReader>
struct MBQReaderMapDataT {
  KeyReader keyReader;
  ValueReader valueReader;
  template <class M>
  int operator()(const MBQMessageIterator& it, M& map) const {
    typename M::key_type key{};
    typename M::mapped_type value{};
    if (keyReader(it, key) != 0 || valueReader(it, value) != 0) return -1;
    map.insert(std::make_pair(std::move(key), std::move(value)));
    return 0;
  }
};
template <class KeyWriter, class ValueWriter>
struct MBQWriterPairItemT {
  KeyWriter keyWriter;
  ValueWriter valueWriter;
  template <class P>
  int operator()(MBQMessageIterator& it, const P& item) const {
    if (keyWriter(it, item.first) != 0 || valueWriter(it, item.second) != 0) return -1;
    return 0;
  }
};

// Repeated children with one id. The item reader runs on each child in turn and receives the
// whole container (so it decides how to insert); the first error ends the read and is
// returned, keeping the items read before it. No child at all: 0 if optional, else -1.
template <class ID, class ItemReader>
struct MBQReaderListT {
  ItemReader itemReader;
  ID id;
  int flags;
  template <class C>
  int operator()(const MBQMessageIterator& it, C& container) const;
};
// One child per item, in container order, each through the item writer at that child.
template <class ID, class ItemWriter>
struct MBQWriterListT {
  ItemWriter itemWriter;
  ID id;
  template <class C>
  int operator()(MBQMessageIterator& it, const C& container) const;
};

// ---------------------------------------------------------------- builders

template <class Reader, class ID>
MBQReaderIDT<ID, Reader> MBQReaderID(const Reader& reader, const ID& id, int flags = MBQReaderRequired) {
  return {reader, id, flags};
}
template <class Reader>
MBQReaderIDT<std::string, Reader> MBQReaderID(const Reader& reader, const char* name, int flags = MBQReaderRequired) {
  return {reader, std::string(name), flags};
}
template <class Writer, class ID>
MBQWriterIDT<ID, Writer> MBQWriterID(const Writer& writer, const ID& id) {
  return {writer, id};
}
template <class Writer>
MBQWriterIDT<std::string, Writer> MBQWriterID(const Writer& writer, const char* name) {
  return {writer, std::string(name)};
}

// A list (vector-like container) of items read by `item` at repeated children `id`.
template <class Reader, class ID>
MBQReaderListT<ID, MBQReaderListDataT<Reader>> MBQReaderList(const Reader& item, const ID& id, int flags = MBQReaderRequired) {
  return {MBQReaderListDataT<Reader>{item}, id, flags};
}
template <class Reader>
MBQReaderListT<std::string, MBQReaderListDataT<Reader>> MBQReaderList(const Reader& item, const char* name, int flags = MBQReaderRequired) {
  return {MBQReaderListDataT<Reader>{item}, std::string(name), flags};
}
template <class Reader, class ID>
MBQReaderListT<ID, MBQReaderSetDataT<Reader>> MBQReaderSet(const Reader& item, const ID& id, int flags = MBQReaderRequired) {
  return {MBQReaderSetDataT<Reader>{item}, id, flags};
}
template <class Reader>
MBQReaderListT<std::string, MBQReaderSetDataT<Reader>> MBQReaderSet(const Reader& item, const char* name, int flags = MBQReaderRequired) {
  return {MBQReaderSetDataT<Reader>{item}, std::string(name), flags};
}
template <class Writer, class ID>
MBQWriterListT<ID, Writer> MBQWriterList(const Writer& item, const ID& id) {
  return {item, id};
}
template <class Writer>
MBQWriterListT<std::string, Writer> MBQWriterList(const Writer& item, const char* name) {
  return {item, std::string(name)};
}

// A map stored as repeated children `id`, each item holding a key and a value; `key` and
// `value` are the item's part readers (or writers), normally by-id ones.
template <class ID, class KeyReader, class ValueReader>
MBQReaderListT<ID, MBQReaderMapDataT<KeyReader, ValueReader>> MBQReaderMap(const ID& id, int flags, const KeyReader& key, const ValueReader& value) {
  return {MBQReaderMapDataT<KeyReader, ValueReader>{key, value}, id, flags};
}
template <class KeyReader, class ValueReader>
MBQReaderListT<std::string, MBQReaderMapDataT<KeyReader, ValueReader>> MBQReaderMap(const char* name, int flags, const KeyReader& key, const ValueReader& value) {
  return {MBQReaderMapDataT<KeyReader, ValueReader>{key, value}, std::string(name), flags};
}
template <class ID, class KeyWriter, class ValueWriter>
MBQWriterListT<ID, MBQWriterPairItemT<KeyWriter, ValueWriter>> MBQWriterMap(const ID& id, const KeyWriter& key, const ValueWriter& value) {
  return {MBQWriterPairItemT<KeyWriter, ValueWriter>{key, value}, id};
}
template <class KeyWriter, class ValueWriter>
MBQWriterListT<std::string, MBQWriterPairItemT<KeyWriter, ValueWriter>> MBQWriterMap(const char* name, const KeyWriter& key, const ValueWriter& value) {
  return {MBQWriterPairItemT<KeyWriter, ValueWriter>{key, value}, std::string(name)};
}

// Data lists: a container of plain values (or records with default codecs), one child `id`
// per item. Sets insert, every other container appends.
template <class C>
struct MBQIsSetLike : std::false_type {};
template <class K, class Cmp, class A>
struct MBQIsSetLike<std::set<K, Cmp, A>> : std::true_type {};

template <class C, class ID>
auto MBQReaderData(const C&, const ID& id, int flags = MBQReaderRequired) {
  using Item = MBQDefaultReader<typename C::value_type>;
  using Data = std::conditional_t<MBQIsSetLike<C>::value, MBQReaderSetDataT<Item>, MBQReaderListDataT<Item>>;
  return MBQReaderListT<std::conditional_t<std::is_integral<ID>::value, int, std::string>, Data>{Data{Item{}}, id, flags};
}
template <class C, class ID>
auto MBQWriterData(const C&, const ID& id) {
  using Item = MBQDefaultWriter<typename C::value_type>;
  return MBQWriterListT<std::conditional_t<std::is_integral<ID>::value, int, std::string>, Item>{Item{}, id};
}

// ---------------------------------------------------------------- definitions

template <class T>
int MBQReaderValue<T>::operator()(const MBQMessageIterator& it, T& value) const {
  std::string text;
  if (it.getText(text) != 0) return -1;
  if (MBQValueText<T>::parse(text, value) == 0) return 0;
  codec_detail::noteBadValue(text, codec_detail::valueKind<T>());
  return -1;
}

template <class T>
int MBQWriterValue<T>::operator()(MBQMessageIterator& it, const T& value) const {
  return it.setText(MBQValueText<T>::format(value));
}

template <class T, class Writer>
int putObjectInternal(MBQMessageIterator& it, const T& object, const Writer& writer) {
  if constexpr (codec_detail::HasSchema<Writer>::value) {
    const char* strNS = writer.getStrNSID();
    const char* strType = writer.getStrTypeID();
    Debug::check(strNS != nullptr, "MBQMessage", codec_detail::kIteratorPath, 853, "putObjectInternal");
    Debug::check(strType != nullptr, "MBQMessage", codec_detail::kIteratorPath, 854, "putObjectInternal");
    const std::string savedNS = it.getNamespace();
    bool namespaceSet = false;
    if (writer.getNSID() != 0) {
      it.setNamespace(writer.getNSID());
      namespaceSet = true;
    } else if (*strNS != '\0') {
      it.setNamespace(std::string(strNS));
      namespaceSet = true;
    }
    if (writer.getTypeID() > 100)
      it.setSchemaType(writer.getNSID(), writer.getTypeID());
    else if (*strType != '\0')
      it.setSchemaType(std::string(strType), std::string(strNS));
    int rc = writer(it, object);
    // Back to no namespace, as the caller's writes expect; a surrounding guard re-applies its
    // own namespace when it ends.
    if (namespaceSet) it.setNamespace(savedNS);
    return rc;
  } else {
    return writer(it, object);
  }
}

template <class ID, class Reader>
template <class T>
int MBQReaderIDT<ID, Reader>::operator()(const MBQMessageIterator& it, T& value) const {
  Debug::check(!codec_detail::keyIsEmpty(id), "MBQMessage", codec_detail::kIteratorPath, 752, "MBQReaderIDT");
  if (it.descend(id) != 0) {
    if (flags & MBQReaderOptional) {
      codec_detail::onMissing(value);
      return 0;
    }
    codec_detail::noteMissingElement(id);
    return -1;
  }
  clearErrorMessage();
  int rc = reader(it, value);
  it.up();
  if (rc != 0) codec_detail::noteFailedElement(id);
  return rc;
}

template <class ID, class Writer, int itemNSType>
template <class T>
int MBQWriterIDT<ID, Writer, itemNSType>::operator()(MBQMessageIterator& it, const T& value) const {
  Debug::check(!codec_detail::keyIsEmpty(id), "MBQMessage", codec_detail::kIteratorPath, 671, "MBQWriterIDT");
  if (!codec_detail::shouldWrite(value)) return 0;
  if (it.addChildAndDescend(id) != 0) return -1;
  int rc = putObjectInternal(it, value, writer);
  if (itemNSType != 0) it.setElementNamespace(itemNSType);
  it.up();
  return rc;
}

template <class ID, class ItemReader>
template <class C>
int MBQReaderListT<ID, ItemReader>::operator()(const MBQMessageIterator& it, C& container) const {
  if (it.descend(id) != 0) {
    if (flags & MBQReaderOptional) return 0;
    codec_detail::noteMissingElement(id);
    return -1;
  }
  int rc = 0;
  do {
    clearErrorMessage();
    rc = itemReader(it, container);
    if (rc != 0) break;
  } while (it.next(id) == 0);
  it.up();
  if (rc != 0) codec_detail::noteFailedElement(id);
  return rc;
}

template <class ID, class ItemWriter>
template <class C>
int MBQWriterListT<ID, ItemWriter>::operator()(MBQMessageIterator& it, const C& container) const {
  for (const auto& item : container) {
    int rc = MBQWriterIDT<ID, ItemWriter>{itemWriter, id}(it, item);
    if (rc != 0) return rc;
  }
  return 0;
}

// ---------------------------------------------------------------- cursor entry points

template <class T, class Key>
int MBQMessageIterator::getValue(const Key& key, T& value) const {
  return MBQReaderIDT<std::conditional_t<std::is_integral<Key>::value, int, std::string>, MBQReaderValue<T>>{{}, key, MBQReaderRequired}(*this, value);
}

template <class T, class Key>
int MBQMessageIterator::setValue(const Key& key, const T& value) {
  return MBQWriterIDT<std::conditional_t<std::is_integral<Key>::value, int, std::string>, MBQWriterValue<T>>{{}, key}(*this, value);
}

template <class T, class Reader>
int MBQMessageIterator::getObject(T& object, const Reader& reader, int id) const {
  if (id == 0) return reader(*this, object);
  return MBQReaderIDT<int, Reader>{reader, id, MBQReaderOptional}(*this, object);
}

template <class T, class Reader>
int MBQMessageIterator::getObject(T& object, const Reader& reader, const std::string& name) const {
  if (name.empty()) return reader(*this, object);
  return MBQReaderIDT<std::string, Reader>{reader, name, MBQReaderOptional}(*this, object);
}

template <class T, class Writer>
int MBQMessageIterator::putObject(const T& object, const Writer& writer, int id) {
  if (id == 0) return putObjectInternal(*this, object, writer);
  if (lookup(id) == 0) remove();
  return MBQWriterIDT<int, Writer>{writer, id}(*this, object);
}

template <class T, class Writer>
int MBQMessageIterator::putObject(const T& object, const Writer& writer, const std::string& name) {
  if (name.empty()) return putObjectInternal(*this, object, writer);
  if (lookup(name) == 0) remove();
  return MBQWriterIDT<std::string, Writer>{writer, name}(*this, object);
}

template <class T, class Key>
int MBQMessageIterator::getObj(T& object, const Key& key) const {
  return getObject(object, MBQDefaultReader<T>{}, key);
}

template <class T, class Key>
int MBQMessageIterator::putObj(const T& object, const Key& key) {
  return putObject(object, MBQDefaultWriter<T>{}, key);
}

}  // namespace MBQ
