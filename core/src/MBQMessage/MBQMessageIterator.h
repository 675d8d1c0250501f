#pragma once

#include <memory>
#include <string>

#include "MBQCore/MBQExport.h"

namespace MBQ {

// Ranks the children of one element, so that a cursor inserts new children in a fixed order
// rather than at the end. A rank below 0 means "not ranked".
class MBQ_EXPORT MBQChildOrder {
 public:
  virtual ~MBQChildOrder();
  virtual int getPositionOfTheTag(const std::string& name) const = 0;
};

// The cursor over a message tree. A cursor stands on one element (the current element) of a
// tree it does not own exclusively; it can descend into children and come back up, but never
// above the element it was created on (its top).
//
// Elements are addressed by numeric tag id (the tag table gives the element name; 0 means no
// id) or by element name. Look-ups match the element's local name in any namespace; writes put
// new elements in the namespace set with setNamespace() (none by default).
//
// Navigation does not change the tree, so it is const: readers take a const cursor and still
// walk it. Every operation returns 0 on success and non-zero otherwise unless said.
//
// Tag ids are constants of the calling code: an id that the tag table does not know ends the
// process (MBQ::abort), like any other programming error.
class MBQ_EXPORT MBQMessageIterator {
 public:
  virtual ~MBQMessageIterator();

  // --- the current element itself
  // Its text content (the concatenated text of its direct text children).
  virtual int getText(std::string& text) const = 0;
  // Replaces its text content (element children are kept).
  virtual int setText(const std::string& text) = 0;
  // Its local name.
  virtual std::string getName() const = 0;
  // True when it has neither element children nor text other than white space.
  virtual bool isEmptyElement() const = 0;

  // --- moving
  // To the first child with the id or name; fails (and stays) when there is none.
  virtual int descend(int id) const = 0;
  virtual int descend(const std::string& name) const = 0;
  // To the next sibling with the id or name; fails (and stays) at the end.
  virtual int next(int id) const = 0;
  virtual int next(const std::string& name) const = 0;
  // To the first element child of any name / the next element sibling of any name; for walking
  // a tree whose names are not known in advance.
  virtual int descendFirst() const = 0;
  virtual int nextSibling() const = 0;
  // Back to the parent; fails at the cursor's top.
  virtual int up() const = 0;

  // --- children
  virtual bool hasChild(int id) const = 0;
  virtual bool hasChild(const std::string& name) const = 0;
  // Adds an empty child (in the current write namespace) and stays; or adds and descends.
  virtual int addChild(int id) = 0;
  virtual int addChild(const std::string& name) = 0;
  virtual int addChildAndDescend(int id) = 0;
  virtual int addChildAndDescend(const std::string& name) = 0;
  // Looks a child up and remembers it; remove() then deletes the element found. remove()
  // without a successful look-up since the last removal fails.
  virtual int lookup(int id) const = 0;
  virtual int lookup(const std::string& name) const = 0;
  virtual int remove() = 0;
  // Deep-copies every child of `source`'s current element (with their namespaces and types)
  // to the end of the current element. The source may belong to another message.
  virtual int importChildren(const MBQMessageIterator& source) = 0;
  // Removes every child of the current element.
  virtual int clearChildren() = 0;

  // --- namespaces
  // The namespace of elements written next: by URI (empty resets to none) or by numeric id of
  // the default map (0 resets to none; an unknown id fails).
  virtual int setNamespace(const std::string& uri) = 0;
  virtual int setNamespace(int namespaceId) = 0;
  // The namespace of the current element itself, by numeric id (0: none).
  virtual int setElementNamespace(int namespaceId) = 0;
  // The URI of the write namespace now in force ("" for none).
  virtual std::string getNamespace() const = 0;

  // --- schema types, stored as xsi:type with a namespace-qualified name
  // "namespace URI:type name", or just the type name for a type in no namespace. Fails when
  // the element declares no type.
  virtual int getSchemaType(std::string& type) const = 0;
  virtual int setSchemaType(int namespaceId, int typeId) = 0;
  virtual int setSchemaType(const std::string& typeName, const std::string& namespaceUri) = 0;

  // Orders the children later added directly under the cursor's top element; nullptr (the
  // default) appends. The rule is not owned and must outlive the cursor's writes.
  virtual void setChildOrder(const MBQChildOrder* order) = 0;

  // A new, independent cursor whose top is the current element of this one.
  virtual std::unique_ptr<MBQMessageIterator> clone() const = 0;

  // --- values of a child, by id or name. Strings, 32- and 64-bit integers, booleans (written
  // as 0/1, read from 0/1/true/false) and doubles. A missing child or a text that does not
  // convert fails and leaves the value unchanged.
  template <class T, class Key>
  int getValue(const Key& key, T& value) const;
  template <class T, class Key>
  int setValue(const Key& key, const T& value);

  // --- records, through readers and writers of the codec (MBQCodec.h)
  // With a non-zero id: reads the child through a by-id reader with the optional flag (a
  // missing child is not an error and leaves the object untouched); with id 0 the reader runs
  // on the current element.
  template <class T, class Reader>
  int getObject(T& object, const Reader& reader, int id = 0) const;
  template <class T, class Reader>
  int getObject(T& object, const Reader& reader, const std::string& name) const;
  // With a non-zero id: removes a child with that id if there is one, then writes a new one;
  // with id 0 the record is written in place (with its schema type when its writer has one).
  template <class T, class Writer>
  int putObject(const T& object, const Writer& writer, int id = 0);
  template <class T, class Writer>
  int putObject(const T& object, const Writer& writer, const std::string& name);
  // The same with the type's default reader and writer.
  template <class T, class Key>
  int getObj(T& object, const Key& key) const;
  template <class T, class Key>
  int putObj(const T& object, const Key& key);
};

}  // namespace MBQ

#include "MBQMessage/MBQCodec.h"
