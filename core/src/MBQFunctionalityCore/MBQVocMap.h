#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "MBQCore/MBQExport.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace MBQ {

class MBQVocCategory;
class MBQVocMap;

using MBQVocMapSP = std::shared_ptr<MBQVocMap>;
using MBQVocCategorySP = std::shared_ptr<const MBQVocCategory>;

// Walks the parameters of one category in document order. Each iterator owns its own cursors,
// so any number of threads may iterate the same category at once, one iterator each; a single
// iterator is not shared between threads. The iterator keeps the vocabulary's document alive,
// so it may outlive the category and the vocabulary it came from. A new iterator stands on
// nothing:
//
//   MBQVocIterator it = category->iterator();
//   for (int rc = it.first(); rc == 0; rc = it.next()) { it->getValue(1010, name); ... }
class MBQ_EXPORT MBQVocIterator {
 public:
  // Stands on no parameter until first() is called.
  explicit MBQVocIterator(const MBQVocCategory& category);
  MBQVocIterator(MBQVocIterator&&) noexcept;
  MBQVocIterator& operator=(MBQVocIterator&&) noexcept;
  MBQVocIterator(const MBQVocIterator&) = delete;
  MBQVocIterator& operator=(const MBQVocIterator&) = delete;
  ~MBQVocIterator();

  // To the first parameter: 0, or -1 when the category has none (the iterator is then invalid).
  // May be called again at any time to restart.
  int first();
  // To the next parameter: 0, or -1 past the last one or before first() (then invalid).
  int next();
  bool isValid() const;

  // The current parameter as a cursor standing on its element, for reads such as
  // getValue(1010, name), getValue("value_type", type), getValue(1304, complexity). The cursor
  // cannot leave the parameter (its top is the parameter element) and moving it does not
  // disturb the iteration. Valid until the next first()/next(). Calling it on an invalid
  // iterator is a programming error and ends the process.
  const MBQMessageIterator& parameter() const;
  const MBQMessageIterator& operator*() const { return parameter(); }
  const MBQMessageIterator* operator->() const { return &parameter(); }

 private:
  std::unique_ptr<MBQMessageIterator> walker_;   // top: the category element
  std::unique_ptr<MBQMessageIterator> current_;  // a clone at the current parameter, or null
  bool onParameter_ = false;                     // whether walker_ stands below its top
};

// One category of a loaded vocabulary: a name, the technology it belongs to, and parameters.
// Immutable; shared between threads through MBQVocCategorySP.
class MBQ_EXPORT MBQVocCategory {
 public:
  MBQVocCategory(const MBQVocCategory&) = delete;
  MBQVocCategory& operator=(const MBQVocCategory&) = delete;
  ~MBQVocCategory();

  const std::string& getName() const { return name_; }
  // The technology key the category sits under; empty for a category at the top level.
  const std::string& getTechnology() const { return technology_; }
  std::size_t size() const { return size_; }
  // A new iterator over the parameters, standing on none (call first()).
  MBQVocIterator iterator() const;

 private:
  friend class MBQVocMap;
  friend class MBQVocIterator;
  MBQVocCategory(std::string technology, std::string name, std::size_t size,
                 std::unique_ptr<MBQMessageIterator> element);

  std::string technology_;
  std::string name_;
  std::size_t size_;
  // Stands on the category element and is never moved: iterators clone it, which only reads,
  // so concurrent iterator() calls are safe.
  std::unique_ptr<MBQMessageIterator> element_;
};

// The vocabulary: an XML document of categories of parameters, optionally grouped by
// technology. The file format is described in docs/vocabulary.md; in short:
//
//   <vocabulary>
//     <technology> <name>quellix</name>
//       <category> <name>qos</name>
//         <parameter> <name>numproc</name> <value_type>2</value_type> ... </parameter>
//       </category>
//     </technology>
//     <category> <name>...</name> ... </category>        (a category of no technology)
//   </vocabulary>
//
// Loading checks the structure: the root is <vocabulary>; it holds only <technology> and
// <category> elements, a technology only <name> and <category>, a category only <name> and
// <parameter>; every technology, category and parameter has exactly one non-empty <name>
// without white space. Technology keys and category names (within one technology,
// or at the top level) are unique; parameter names are unique within their category without
// regard to case, since readers key resources by the lower-cased name. What a parameter holds
// besides its name is the readers' business.
//
// Look-ups compare names exactly (case matters). The formulas category is named "tune";
// looking up "FORMULAE" finds it, and no category may itself be called "FORMULAE".
//
// Loading is not synchronised: load a vocabulary first, then share it. A loaded vocabulary is
// read-only and may be used by any number of threads; categories and iterators stay valid (and
// keep the old document alive) even when the vocabulary is loaded again or destroyed.
class MBQ_EXPORT MBQVocMap {
 public:
  static constexpr const char* kFormulasCategory = "tune";
  // The elements of a parameter, by tag id or name: its name, a formula's id, text and second
  // text, and a resource's declaration (complexity, value type).
  static constexpr const char* kValueTypeElement = "value_type";
  static constexpr const char* kFormulasAlias = "FORMULAE";
  // Largest vocabulary file loadFile() reads.
  static constexpr std::size_t kMaxFileSize = 16u << 20;

  // An empty vocabulary: every look-up fails until a load succeeds.
  MBQVocMap();
  MBQVocMap(const MBQVocMap&) = delete;
  MBQVocMap& operator=(const MBQVocMap&) = delete;
  ~MBQVocMap();

  // Replaces the content with the document in `text`. 0 on success; -1 on failure, keeping
  // the previous content, with the error text
  //   "can not parse vocabulary: line L, column C: <what>"   (malformed XML), or
  //   "invalid vocabulary: <where>: <what>"                   (wrong structure), e.g.
  //   "invalid vocabulary: technology 'quellix', category 'qos', parameter #3: no name".
  int load(const std::string& text);
  // The same with the content of a file; failures are prefixed with "<path>: ", and an
  // unreadable file, or one larger than kMaxFileSize, also yields -1.
  int loadFile(const std::string& path);

  // A category by name: first among the top-level categories, then under each technology in
  // document order. Null when there is none (the error text then says so).
  MBQVocCategorySP readCategory(const std::string& name) const;
  // A category by path: {technology key, category name}, or {category name} for the same
  // search as above. Any other path length, an unknown technology or category: null.
  MBQVocCategorySP readCategory(const std::vector<std::string>& path) const;
  // Lets readCategory({"quellix", "qos"}) pick the path form: without it the braces could also
  // build a std::string from two pointers, and the call would be ambiguous.
  MBQVocCategorySP readCategory(std::initializer_list<std::string> path) const {
    return readCategory(std::vector<std::string>(path));
  }

  // Every category, in document order.
  const std::vector<MBQVocCategorySP>& getCategories() const { return categories_; }

 private:
  std::vector<MBQVocCategorySP> categories_;
};

}  // namespace MBQ
