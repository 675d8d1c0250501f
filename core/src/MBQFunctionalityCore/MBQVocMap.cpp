#include "MBQFunctionalityCore/MBQVocMap.h"

#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <utility>

#include "MBQCore/MBQAbort.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQString.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQMessage/MBQTagTable.h"
#include "MBQMessage/MBQTags.h"

namespace MBQ {

namespace {

constexpr const char* kModule = "MBQFunctionalityCore";
constexpr const char* kPath = "core/src/MBQFunctionalityCore/MBQVocMap";

constexpr const char* kRootElement = "vocabulary";
constexpr const char* kTechnologyElement = "technology";
constexpr const char* kCategoryElement = "category";
constexpr const char* kParameterElement = "parameter";

// What the structure check found wrong, and where.
struct Problem {
  std::string where;
  std::string what;
};

bool hasWhiteSpace(const std::string& text) {
  for (unsigned char c : text)
    if (std::isspace(c)) return true;
  return false;
}

// Text directly inside a structural element is almost always a misplaced value, e.g.
// <category>qos</category> instead of <category><name>qos</name>.
bool hasStrayText(const MBQMessageIterator& element) {
  std::string text;
  element.getText(text);
  for (unsigned char c : text)
    if (!std::isspace(c)) return true;
  return false;
}

// Reads the single name child of `element`; on failure fills `what` and returns -1.
int readName(const MBQMessageIterator& element, std::string& name, std::string& what) {
  std::unique_ptr<MBQMessageIterator> child = element.clone();
  if (child->descend(Tag::kName) != 0) {
    what = "no name";
    return -1;
  }
  child->getText(name);
  if (child->next(Tag::kName) == 0) {
    what = "more than one name";
    return -1;
  }
  if (name.empty()) {
    what = "empty name";
    return -1;
  }
  if (hasWhiteSpace(name)) {
    what = "name '" + name + "' contains white space";
    return -1;
  }
  return 0;
}

std::string ordinal(const char* kind, int number) { return std::string(kind) + " #" + std::to_string(number); }
std::string named(const char* kind, const std::string& name) { return std::string(kind) + " '" + name + "'"; }
std::string unexpected(const MBQMessageIterator& element) { return "unexpected element <" + element.getName() + ">"; }

// A category found by the structure check.
struct FoundCategory {
  std::string technology;
  std::string name;
  std::size_t size;
  std::unique_ptr<MBQMessageIterator> element;
};

// Checks the structure of a parsed vocabulary and lists its categories in document order.
class Collector {
 public:
  int collect(const MBQMessageIterator& root, std::vector<FoundCategory>& categories) {
    if (root.getName() != kRootElement)
      return fail("document", "root element is <" + root.getName() + ">, expected <" + kRootElement + ">");
    if (hasStrayText(root)) return fail(std::string("<") + kRootElement + ">", "unexpected text");
    std::set<std::string> technologies;
    std::set<std::string> topLevelCategories;
    int technologyCount = 0;
    int categoryCount = 0;
    std::unique_ptr<MBQMessageIterator> child = root.clone();
    for (int rc = child->descendFirst(); rc == 0; rc = child->nextSibling()) {
      const std::string element = child->getName();
      if (element == kTechnologyElement) {
        if (collectTechnology(*child, ++technologyCount, technologies, categories) != 0) return -1;
      } else if (element == kCategoryElement) {
        if (collectCategory(*child, std::string(), "", ++categoryCount, topLevelCategories, categories) != 0)
          return -1;
      } else {
        return fail(std::string("<") + kRootElement + ">", unexpected(*child));
      }
    }
    return 0;
  }

  const Problem& problem() const { return problem_; }

 private:
  int fail(std::string where, std::string what) {
    problem_.where = std::move(where);
    problem_.what = std::move(what);
    return -1;
  }

  int collectTechnology(const MBQMessageIterator& technology, int number, std::set<std::string>& keys,
                        std::vector<FoundCategory>& categories) {
    std::string key;
    std::string what;
    if (readName(technology, key, what) != 0) return fail(ordinal(kTechnologyElement, number), what);
    const std::string where = named(kTechnologyElement, key);
    if (!keys.insert(key).second) return fail(where, "technology key used twice");
    if (hasStrayText(technology)) return fail(where, "unexpected text");
    const std::string nameElement = tagName(Tag::kName);
    std::set<std::string> names;
    int categoryCount = 0;
    std::unique_ptr<MBQMessageIterator> child = technology.clone();
    for (int rc = child->descendFirst(); rc == 0; rc = child->nextSibling()) {
      const std::string element = child->getName();
      if (element == kCategoryElement) {
        if (collectCategory(*child, key, where + ", ", ++categoryCount, names, categories) != 0) return -1;
      } else if (element != nameElement) {
        return fail(where, unexpected(*child));
      }
    }
    return 0;
  }

  int collectCategory(const MBQMessageIterator& category, const std::string& technology, const std::string& prefix,
                      int number, std::set<std::string>& names, std::vector<FoundCategory>& categories) {
    std::string name;
    std::string what;
    if (readName(category, name, what) != 0) return fail(prefix + ordinal(kCategoryElement, number), what);
    const std::string where = prefix + named(kCategoryElement, name);
    if (name == MBQVocMap::kFormulasAlias)
      return fail(where, std::string("the name is reserved: it reads the '") + MBQVocMap::kFormulasCategory +
                             "' category");
    if (!names.insert(name).second) return fail(where, "category name used twice");
    if (hasStrayText(category)) return fail(where, "unexpected text");
    const std::string nameElement = tagName(Tag::kName);
    // Readers key resources by the lower-cased name, so names differing only in case would
    // silently shadow each other there.
    std::map<std::string, int> parameters;
    int parameterCount = 0;
    std::unique_ptr<MBQMessageIterator> child = category.clone();
    for (int rc = child->descendFirst(); rc == 0; rc = child->nextSibling()) {
      const std::string element = child->getName();
      if (element == kParameterElement) {
        ++parameterCount;
        std::string parameter;
        if (readName(*child, parameter, what) != 0)
          return fail(where + ", " + ordinal(kParameterElement, parameterCount), what);
        auto inserted = parameters.emplace(toLower(parameter), parameterCount);
        if (!inserted.second)
          return fail(where + ", " + ordinal(kParameterElement, parameterCount),
                      "name '" + parameter + "' repeats the name of parameter #" +
                          std::to_string(inserted.first->second));
      } else if (element != nameElement) {
        return fail(where, unexpected(*child));
      }
    }
    categories.push_back({technology, name, static_cast<std::size_t>(parameterCount), category.clone()});
    return 0;
  }

  Problem problem_;
};

// The whole file, refusing anything larger than `limit` bytes.
int readFile(const std::string& path, std::size_t limit, std::string& text) {
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    setErrorMessage("%s: can not open: %s", path.c_str(), std::strerror(errno));
    return -1;
  }
  text.clear();
  char buffer[65536];
  for (;;) {
    ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0) {
      if (errno == EINTR) continue;
      setErrorMessage("%s: can not read: %s", path.c_str(), std::strerror(errno));
      ::close(fd);
      return -1;
    }
    if (got == 0) break;
    if (text.size() + static_cast<std::size_t>(got) > limit) {
      setErrorMessage("%s: file is larger than %zu bytes", path.c_str(), limit);
      ::close(fd);
      return -1;
    }
    text.append(buffer, static_cast<std::size_t>(got));
  }
  ::close(fd);
  return 0;
}

const std::string& categoryName(const std::string& name) {
  static const std::string formulas = MBQVocMap::kFormulasCategory;
  return name == MBQVocMap::kFormulasAlias ? formulas : name;
}

}  // namespace

// ---------------------------------------------------------------- MBQVocIterator

MBQVocIterator::MBQVocIterator(const MBQVocCategory& category) : walker_(category.element_->clone()) {}
MBQVocIterator::MBQVocIterator(MBQVocIterator&&) noexcept = default;
MBQVocIterator& MBQVocIterator::operator=(MBQVocIterator&&) noexcept = default;
MBQVocIterator::~MBQVocIterator() = default;

int MBQVocIterator::first() {
  current_.reset();
  if (onParameter_) {
    walker_->up();
    onParameter_ = false;
  }
  if (walker_->descend(std::string(kParameterElement)) != 0) return -1;
  onParameter_ = true;
  current_ = walker_->clone();
  return 0;
}

int MBQVocIterator::next() {
  // A failed next() leaves the walker on the last parameter, so first() can still climb back.
  if (!current_ || walker_->next(std::string(kParameterElement)) != 0) {
    current_.reset();
    return -1;
  }
  current_ = walker_->clone();
  return 0;
}

bool MBQVocIterator::isValid() const { return current_ != nullptr; }

const MBQMessageIterator& MBQVocIterator::parameter() const {
  Debug::check(current_ != nullptr, kModule, kPath, __LINE__, "parameter");
  return *current_;
}

// ---------------------------------------------------------------- MBQVocCategory

MBQVocCategory::MBQVocCategory(std::string technology, std::string name, std::size_t size,
                               std::unique_ptr<MBQMessageIterator> element)
    : technology_(std::move(technology)), name_(std::move(name)), size_(size), element_(std::move(element)) {}

MBQVocCategory::~MBQVocCategory() = default;

MBQVocIterator MBQVocCategory::iterator() const { return MBQVocIterator(*this); }

// ---------------------------------------------------------------- MBQVocMap

MBQVocMap::MBQVocMap() = default;
MBQVocMap::~MBQVocMap() = default;

int MBQVocMap::load(const std::string& text) {
  MBQMessage message(kRootElement);
  if (message.parse(text) != 0) {
    setErrorMessage("can not parse vocabulary: %s", getErrorMessage().c_str());
    return -1;
  }
  Collector collector;
  std::vector<FoundCategory> found;
  std::unique_ptr<MBQMessageIterator> root = message.iterator();
  if (collector.collect(*root, found) != 0) {
    setErrorMessage("invalid vocabulary: %s: %s", collector.problem().where.c_str(), collector.problem().what.c_str());
    return -1;
  }
  std::vector<MBQVocCategorySP> categories;
  categories.reserve(found.size());
  for (FoundCategory& category : found)
    categories.emplace_back(new MBQVocCategory(std::move(category.technology), std::move(category.name),
                                               category.size, std::move(category.element)));
  categories_.swap(categories);
  return 0;
}

int MBQVocMap::loadFile(const std::string& path) {
  std::string text;
  if (readFile(path, kMaxFileSize, text) != 0) return -1;
  if (load(text) != 0) {
    setErrorMessage("%s: %s", path.c_str(), getErrorMessage().c_str());
    return -1;
  }
  return 0;
}

MBQVocCategorySP MBQVocMap::readCategory(const std::string& name) const {
  const std::string& wanted = categoryName(name);
  for (const MBQVocCategorySP& category : categories_)
    if (category->getTechnology().empty() && category->getName() == wanted) return category;
  for (const MBQVocCategorySP& category : categories_)
    if (!category->getTechnology().empty() && category->getName() == wanted) return category;
  setErrorMessage("no category '%s' in vocabulary", name.c_str());
  return nullptr;
}

MBQVocCategorySP MBQVocMap::readCategory(const std::vector<std::string>& path) const {
  if (path.size() == 1) return readCategory(path[0]);
  if (path.size() != 2) {
    setErrorMessage("vocabulary path of %zu names, expected a technology key and a category", path.size());
    return nullptr;
  }
  const std::string& wanted = categoryName(path[1]);
  if (!path[0].empty())
    for (const MBQVocCategorySP& category : categories_)
      if (category->getTechnology() == path[0] && category->getName() == wanted) return category;
  setErrorMessage("no category '%s' of technology '%s' in vocabulary", path[1].c_str(), path[0].c_str());
  return nullptr;
}

}  // namespace MBQ
