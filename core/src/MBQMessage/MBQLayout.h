#pragma once

// A record's element layout, described once: the children it reads and writes, in order, each
// with its element (tag id or name), its member, whether it is required and whether it repeats.
// The one description drives the record's reader, its writer and the list of its elements:
//
//   const MBQLayout<Quota>& Quota::layout() {
//     static const MBQLayout<Quota> layout{
//         required(Tag::kUsage, &Quota::usage_),
//         optional(Tag::kNote, &Quota::note_),   // an MBQOptionalProperty, written when specified
//         list(Tag::kItem, &Quota::items_)};
//     return layout;
//   }
//   using Reader = MBQLayoutReader<Quota>;   // in the class
//   using Writer = MBQLayoutWriter<Quota>;
//
// Reading stops at the first element that fails and returns -1; the codec's by-id steps have
// then set the error text naming the element path. Writing stops at the first failing write.

#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQTagTable.h"

namespace MBQ {

// One element of a layout as a reader of the layout sees it.
struct MBQLayoutEntry {
  std::string name;  // element name (from the tag table for a tag id); empty for a base part
  bool required;     // a record without it fails to read
  bool repeated;     // zero or more (or one or more when required) children of that name
};

template <class R>
class MBQLayoutElement {
 public:
  virtual ~MBQLayoutElement() = default;
  virtual int read(const MBQMessageIterator& it, R& record) const = 0;
  virtual int write(MBQMessageIterator& it, const R& record) const = 0;
  virtual MBQLayoutEntry entry() const = 0;
  // The entries this part stands for: its own, or a described base's.
  virtual void appendEntries(std::vector<MBQLayoutEntry>& entries) const { entries.push_back(entry()); }
};

template <class R>
using MBQLayoutPart = std::shared_ptr<const MBQLayoutElement<R>>;

template <class R>
class MBQLayout {
 public:
  MBQLayout(std::initializer_list<MBQLayoutPart<R>> parts) : parts_(parts) {}

  int read(const MBQMessageIterator& it, R& record) const {
    for (const auto& part : parts_)
      if (part->read(it, record) != 0) return -1;
    return 0;
  }
  int write(MBQMessageIterator& it, const R& record) const {
    for (const auto& part : parts_)
      if (int rc = part->write(it, record); rc != 0) return rc;
    return 0;
  }
  // Every element read as far as it goes, none failing the record: for peers that send only
  // part of it.
  int readLeniently(const MBQMessageIterator& it, R& record) const {
    for (const auto& part : parts_) part->read(it, record);
    return 0;
  }
  std::vector<MBQLayoutEntry> entries() const {
    std::vector<MBQLayoutEntry> all;
    for (const auto& part : parts_) part->appendEntries(all);
    return all;
  }

 private:
  std::vector<MBQLayoutPart<R>> parts_;
};

// The nested Reader and Writer of a record with a layout.
template <class R>
struct MBQLayoutReader {
  int operator()(const MBQMessageIterator& it, R& record) const { return R::layout().read(it, record); }
};
template <class R>
struct MBQLayoutWriter {
  int operator()(MBQMessageIterator& it, const R& record) const { return R::layout().write(it, record); }
};

// For records read all or nothing: the elements are read into a fresh record, which replaces
// the caller's only when every part read, so a failed read leaves the caller's record as it was
// and a missing optional element gets the default of a fresh record.
template <class R>
struct MBQFreshLayoutReader {
  int operator()(const MBQMessageIterator& it, R& record) const {
    R read;
    if (R::layout().read(it, read) != 0) return -1;
    record = std::move(read);
    return 0;
  }
};

// An optional property that, when its element is there, must read: unlike the default
// optional codec, a malformed value fails the record instead of leaving the property
// unspecified.
template <class T>
struct MBQStrictOptionalReader {
  int operator()(const MBQMessageIterator& it, MBQOptionalProperty<T>& property) const {
    if (MBQDefaultReader<T>()(it, property.get()) != 0) return -1;
    property.specify(true);
    return 0;
  }
};

namespace layout_detail {

inline std::string elementName(int id) {
  const char* name = tagName(id);
  return name != nullptr ? name : "tag " + std::to_string(id);
}
inline std::string elementName(const std::string& name) { return name; }

// Whether R describes itself (a layout inherited from a base does not count).
template <class R, class = void>
struct HasLayout : std::false_type {};
template <class R>
struct HasLayout<R, std::void_t<decltype(R::layout())>>
    : std::is_same<decltype(R::layout()), const MBQLayout<R>&> {};

// Tag ids stay ints; element names become strings.
template <class K>
using KeyOf = std::conditional_t<std::is_integral<K>::value, int, std::string>;

// A member read and written by a reader and writer of its own: by-id, list or in place.
template <class R, class T, class Reader, class Writer>
class Child final : public MBQLayoutElement<R> {
 public:
  Child(T R::*member, Reader reader, Writer writer, MBQLayoutEntry entry)
      : member_(member), reader_(std::move(reader)), writer_(std::move(writer)), entry_(std::move(entry)) {}
  int read(const MBQMessageIterator& it, R& record) const override { return reader_(it, record.*member_); }
  int write(MBQMessageIterator& it, const R& record) const override { return writer_(it, record.*member_); }
  MBQLayoutEntry entry() const override { return entry_; }

 private:
  T R::*member_;
  Reader reader_;
  Writer writer_;
  MBQLayoutEntry entry_;
};

// A container reader that empties the container first, so that a read list is exactly the
// items found.
template <class Inner>
struct Emptied {
  Inner inner;
  template <class C>
  int operator()(const MBQMessageIterator& it, C& container) const {
    container.clear();
    return inner(it, container);
  }
};

// A part whose read never fails the record: what reads is kept, the rest keeps its value.
template <class R>
class Lenient final : public MBQLayoutElement<R> {
 public:
  explicit Lenient(MBQLayoutPart<R> inner) : inner_(std::move(inner)) {}
  int read(const MBQMessageIterator& it, R& record) const override {
    inner_->read(it, record);
    return 0;
  }
  int write(MBQMessageIterator& it, const R& record) const override { return inner_->write(it, record); }
  MBQLayoutEntry entry() const override {
    MBQLayoutEntry entry = inner_->entry();
    entry.required = false;
    return entry;
  }

 private:
  MBQLayoutPart<R> inner_;
};

// A flag that travels as the presence of an empty element.
template <class R, class ID>
class Marker final : public MBQLayoutElement<R> {
 public:
  Marker(ID id, bool R::*member) : id_(std::move(id)), member_(member) {}
  int read(const MBQMessageIterator& it, R& record) const override {
    record.*member_ = it.hasChild(id_);
    return 0;
  }
  int write(MBQMessageIterator& it, const R& record) const override {
    return record.*member_ ? it.addChild(id_) : 0;
  }
  MBQLayoutEntry entry() const override { return {elementName(id_), false, false}; }

 private:
  ID id_;
  bool R::*member_;
};

// The part of a record that its base class reads and writes in place.
template <class R, class Base>
class BasePart final : public MBQLayoutElement<R> {
 public:
  int read(const MBQMessageIterator& it, R& record) const override {
    return typename Base::Reader()(it, static_cast<Base&>(record));
  }
  int write(MBQMessageIterator& it, const R& record) const override {
    return typename Base::Writer()(it, static_cast<const Base&>(record));
  }
  MBQLayoutEntry entry() const override { return {"", true, false}; }
  void appendEntries(std::vector<MBQLayoutEntry>& entries) const override {
    if constexpr (HasLayout<Base>::value) {
      for (const MBQLayoutEntry& entry : Base::layout().entries()) entries.push_back(entry);
    } else {
      entries.push_back(entry());  // a base with a hand-written codec: its elements are not listed
    }
  }
};

template <class R, class T, class K, class Reader, class Writer>
MBQLayoutPart<R> child(const K& key, T R::*member, const Reader& reader, const Writer& writer, bool required) {
  const KeyOf<K> id(key);
  auto read = MBQReaderIDT<KeyOf<K>, Reader>{reader, id, required ? MBQReaderRequired : MBQReaderOptional};
  auto write = MBQWriterIDT<KeyOf<K>, Writer>{writer, id};
  return std::make_shared<Child<R, T, decltype(read), decltype(write)>>(member, read, write,
                                                                        MBQLayoutEntry{elementName(id), required, false});
}

template <class R, class C, class K, class ItemReader, class ItemWriter>
MBQLayoutPart<R> repeated(const K& key, C R::*member, const ItemReader& item, const ItemWriter& itemWriter, bool required) {
  const KeyOf<K> id(key);
  using Data = std::conditional_t<MBQIsSetLike<C>::value, MBQReaderSetDataT<ItemReader>, MBQReaderListDataT<ItemReader>>;
  auto read = Emptied<MBQReaderListT<KeyOf<K>, Data>>{{Data{item}, id, required ? MBQReaderRequired : MBQReaderOptional}};
  auto write = MBQWriterListT<KeyOf<K>, ItemWriter>{itemWriter, id};
  return std::make_shared<Child<R, C, decltype(read), decltype(write)>>(member, read, write,
                                                                        MBQLayoutEntry{elementName(id), required, true});
}

}  // namespace layout_detail

// A child that must be there, read and written with its type's default codec or the given one.
template <class R, class T, class K>
MBQLayoutPart<R> required(const K& key, T R::*member) {
  return layout_detail::child(key, member, MBQDefaultReader<T>{}, MBQDefaultWriter<T>{}, true);
}
template <class R, class T, class K, class Reader, class Writer>
MBQLayoutPart<R> required(const K& key, T R::*member, const Reader& reader, const Writer& writer) {
  return layout_detail::child(key, member, reader, writer, true);
}

// A child that may be missing: the member keeps its value (an optional property becomes
// unspecified); an optional property is written only when specified, anything else always.
template <class R, class T, class K>
MBQLayoutPart<R> optional(const K& key, T R::*member) {
  return layout_detail::child(key, member, MBQDefaultReader<T>{}, MBQDefaultWriter<T>{}, false);
}
template <class R, class T, class K, class Reader, class Writer>
MBQLayoutPart<R> optional(const K& key, T R::*member, const Reader& reader, const Writer& writer) {
  return layout_detail::child(key, member, reader, writer, false);
}
// An optional property that may be missing but, when there, must read.
template <class R, class T, class K>
MBQLayoutPart<R> strictOptional(const K& key, MBQOptionalProperty<T> R::*member) {
  return layout_detail::child(key, member, MBQStrictOptionalReader<T>{}, MBQDefaultWriter<MBQOptionalProperty<T>>{}, false);
}

// Repeated children, one per item of a container (a set inserts, anything else appends); a
// read container holds exactly the items read, up to the first that fails (which fails the
// record). `list` allows none, `requiredList` needs one.
template <class R, class C, class K>
MBQLayoutPart<R> list(const K& key, C R::*member) {
  using Item = typename C::value_type;
  return layout_detail::repeated(key, member, MBQDefaultReader<Item>{}, MBQDefaultWriter<Item>{}, false);
}
template <class R, class C, class K, class ItemReader, class ItemWriter>
MBQLayoutPart<R> list(const K& key, C R::*member, const ItemReader& item, const ItemWriter& itemWriter) {
  return layout_detail::repeated(key, member, item, itemWriter, false);
}
template <class R, class C, class K>
MBQLayoutPart<R> requiredList(const K& key, C R::*member) {
  using Item = typename C::value_type;
  return layout_detail::repeated(key, member, MBQDefaultReader<Item>{}, MBQDefaultWriter<Item>{}, true);
}
template <class R, class C, class K, class ItemReader, class ItemWriter>
MBQLayoutPart<R> requiredList(const K& key, C R::*member, const ItemReader& item, const ItemWriter& itemWriter) {
  return layout_detail::repeated(key, member, item, itemWriter, true);
}

// An optional holder element around an optional list: the holder is always written, even for
// no items, and a missing holder or item reads as an empty list.
template <class R, class C, class K, class I, class ItemReader, class ItemWriter>
MBQLayoutPart<R> listIn(const K& holder, const I& item, C R::*member, const ItemReader& itemReader,
                        const ItemWriter& itemWriter) {
  using Data = std::conditional_t<MBQIsSetLike<C>::value, MBQReaderSetDataT<ItemReader>, MBQReaderListDataT<ItemReader>>;
  const layout_detail::KeyOf<I> itemId(item);
  const auto items = layout_detail::Emptied<MBQReaderListT<layout_detail::KeyOf<I>, Data>>{{Data{itemReader}, itemId, MBQReaderOptional}};
  return layout_detail::child(holder, member, items, MBQWriterListT<layout_detail::KeyOf<I>, ItemWriter>{itemWriter, itemId}, false);
}

// Any part whose failure to read is ignored: the elements it read are kept, the rest keep
// their values. For elements peers leave out or fill carelessly.
template <class R>
MBQLayoutPart<R> lenient(MBQLayoutPart<R> part) {
  return std::make_shared<layout_detail::Lenient<R>>(std::move(part));
}

// A flag that is true exactly when an (empty) element is there; written only when true.
template <class R, class K>
MBQLayoutPart<R> marker(const K& key, bool R::*member) {
  return std::make_shared<layout_detail::Marker<R, layout_detail::KeyOf<K>>>(layout_detail::KeyOf<K>(key), member);
}

// A member whose reader and writer work on the record's own element: `entry` says what they
// look for there.
template <class R, class T, class Reader, class Writer>
MBQLayoutPart<R> inPlace(T R::*member, const Reader& reader, const Writer& writer, MBQLayoutEntry entry) {
  return std::make_shared<layout_detail::Child<R, T, Reader, Writer>>(member, reader, writer, std::move(entry));
}

// The base class's own elements, read and written in place before (or where listed among) the
// record's.
template <class R, class Base>
MBQLayoutPart<R> base() {
  static_assert(std::is_base_of<Base, R>::value, "base<R, Base>: Base must be a base of R");
  return std::make_shared<layout_detail::BasePart<R, Base>>();
}

}  // namespace MBQ
