#include "KTRFunctionality/KTRVocabulary.h"

#include <cstddef>
#include <memory>
#include <utility>

#include "KTRFunctionality/KTRQoSTune.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQLogger.h"
#include "MBQCore/MBQString.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

// Generated at build time from ktr/lib/share/vocabulary.xml (cmake/KTREmbedFile.cmake).
extern const unsigned char kDefaultVocabulary[];
extern const std::size_t kDefaultVocabularySize;

namespace {

constexpr const char* kModule = "KTRFunctionality";
constexpr const char* kTechnology = "quellix";
constexpr const char* kResourceCategory = "qos";
constexpr const char* kMultipleName = "QOS";
constexpr const char* kValueTypeElement = MBQ::MBQVocMap::kValueTypeElement;

// The declarations the configuration files can hold a value of; any other one makes the
// resource unreadable, which would only show as every value of it being rejected.
struct Declaration {
  int valueType;
  int complexity;
};
constexpr Declaration kReadableDeclarations[] = {{2, 1}, {1, 1}, {1, 0}};

int fail(const std::string& where, const std::string& what) {
  MBQ::setErrorMessage("invalid vocabulary: %s: %s", where.c_str(), what.c_str());
  return -1;
}

std::string parameterWhere(const MBQ::MBQVocCategory& category, const MBQ::MBQMessageIterator& parameter) {
  std::string name;
  parameter.getValue(Tag::kName, name);
  return "technology '" + category.getTechnology() + "', category '" + category.getName() + "', parameter '" +
         name + "'";
}

// An integer element that may be absent (keeping `value`); present, it must be an integer.
template <class Key>
int readOptionalInteger(const MBQ::MBQMessageIterator& parameter, const Key& key, int& value) {
  if (!parameter.hasChild(key)) return 0;
  return parameter.getValue(key, value);
}

int checkResources(const MBQ::MBQVocCategory& resources) {
  MBQ::MBQVocIterator it = resources.iterator();
  if (it.first() != 0)
    return fail("technology '" + resources.getTechnology() + "', category '" + resources.getName() + "'",
                "no parameters");
  for (; it.isValid(); it.next()) {
    std::string name;
    it->getValue(Tag::kName, name);
    if (name == kMultipleName)
      return fail(parameterWhere(resources, *it),
                  std::string("the name is reserved: formulas use it for every resource"));
    // The defaults when an element is missing are those of the configuration file reader.
    Declaration declared{1, 2};
    if (readOptionalInteger(*it, std::string(kValueTypeElement), declared.valueType) != 0)
      return fail(parameterWhere(resources, *it), "value_type is not an integer");
    if (readOptionalInteger(*it, Tag::kComplexity, declared.complexity) != 0)
      return fail(parameterWhere(resources, *it), "complexity is not an integer");
    bool readable = false;
    for (const Declaration& format : kReadableDeclarations)
      readable = readable || (format.valueType == declared.valueType && format.complexity == declared.complexity);
    if (!readable)
      return fail(parameterWhere(resources, *it),
                  "value_type/complexity " + std::to_string(declared.valueType) + "/" +
                      std::to_string(declared.complexity) + " is none of 2/1, 1/1, 1/0");
  }
  return 0;
}

int checkFormulas(const MBQ::MBQVocCategory& formulas) {
  MBQ::MBQVocIterator it = formulas.iterator();
  for (int rc = it.first(); rc == 0; rc = it.next()) {
    std::string id;
    std::string text;
    long long number = 0;
    if (it->getValue(Tag::kType, id) != 0) return fail(parameterWhere(formulas, *it), "no formula id");
    if (MBQ::strToLonglong(id, number) != 0)
      return fail(parameterWhere(formulas, *it), "formula id '" + id + "' is not an integer");
    if (it->getValue(Tag::kFormula, text) != 0) return fail(parameterWhere(formulas, *it), "no formula");
    if (it->getValue(Tag::kFormulaInfo, text) != 0) return fail(parameterWhere(formulas, *it), "no formula message");
  }
  return 0;
}

// Parses every formula as the validation will, so that a bad one is refused when the
// vocabulary is loaded rather than failing every later validation.
int parseFormulas(const MBQ::MBQVocMap& vocabulary, const MBQ::MBQVocCategory& formulas) {
  const MBQ::MBQVEnvConfig noConfig;
  // The checker only reads the vocabulary and does not outlive this call: no ownership.
  KTRQVTune tune(noConfig, std::shared_ptr<const MBQ::MBQVocMap>(std::shared_ptr<void>(), &vocabulary));
  if (tune.init() == 0) return 0;
  const std::string why = MBQ::getErrorMessage();
  // A failed init keeps the parameter index, so the culprit can be named by parsing again.
  if (why.rfind("can not parse formula", 0) == 0) {
    MBQ::MBQVocIterator it = formulas.iterator();
    for (int rc = it.first(); rc == 0; rc = it.next()) {
      std::string text;
      it->getValue(Tag::kFormula, text);
      KTRQVPolishNotation parsed;
      if (tune.formFormula(text, parsed) != 0)
        return fail(parameterWhere(formulas, *it), "formula '" + text + "' does not parse");
    }
  }
  return fail("technology '" + formulas.getTechnology() + "', category '" + formulas.getName() + "'", why);
}

struct BuiltIn {
  std::string text;
  MBQ::MBQVocMapSP vocabulary;
  std::string error;
};

// Never destroyed, so that code running during process exit still finds it.
const BuiltIn& builtIn() {
  static const BuiltIn* const loaded = [] {
    auto* built = new BuiltIn;
    built->text.assign(reinterpret_cast<const char*>(kDefaultVocabulary), kDefaultVocabularySize);
    auto vocabulary = std::make_shared<MBQ::MBQVocMap>();
    if (vocabulary->load(built->text) != 0 || checkVocabulary(*vocabulary) != 0) {
      built->error = MBQ::getErrorMessage();
      MBQ::Logger::put(MBQ::kError, kModule, "built-in vocabulary: %s", built->error.c_str());
    } else {
      built->vocabulary = std::move(vocabulary);
    }
    return built;
  }();
  return *loaded;
}

}  // namespace

MBQ::MBQVocMapSP defaultVocabulary() {
  const BuiltIn& loaded = builtIn();
  if (!loaded.vocabulary) MBQ::setErrorMessage("built-in vocabulary: %s", loaded.error.c_str());
  return loaded.vocabulary;
}

const std::string& defaultVocabularyText() { return builtIn().text; }

int checkVocabulary(const MBQ::MBQVocMap& vocabulary) {
  MBQ::MBQVocCategorySP resources = vocabulary.readCategory({kTechnology, kResourceCategory});
  if (!resources)
    return fail("technology '" + std::string(kTechnology) + "'",
                "no category '" + std::string(kResourceCategory) + "'");
  if (checkResources(*resources) != 0) return -1;
  MBQ::MBQVocCategorySP formulas = vocabulary.readCategory({kTechnology, MBQ::MBQVocMap::kFormulasCategory});
  if (formulas && checkFormulas(*formulas) != 0) return -1;
  // An empty category has nothing to parse; validation will say it cannot read the formulas.
  if (formulas && formulas->size() != 0 && parseFormulas(vocabulary, *formulas) != 0) return -1;
  MBQ::clearErrorMessage();
  return 0;
}

MBQ::MBQVocMapSP loadVocabulary(const std::string& path) {
  auto vocabulary = std::make_shared<MBQ::MBQVocMap>();
  if (vocabulary->loadFile(path) != 0) return nullptr;
  if (checkVocabulary(*vocabulary) != 0) {
    MBQ::setErrorMessage("%s: %s", path.c_str(), MBQ::getErrorMessage().c_str());
    return nullptr;
  }
  return vocabulary;
}

}  // namespace KTR
