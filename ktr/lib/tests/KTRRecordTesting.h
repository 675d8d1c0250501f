#pragma once

// What the library's tests share: a fixture that writes records under an element "r" and reads
// them back from the message's text, so every check goes through XML; vocabularies made from
// text; and the core tests' logger capture, private folder and file text.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRRecordCatalog.h"
#include "MBQCore/MBQError.h"
#include "MBQFunctionalityCore/MBQVocMap.h"
#include "MBQMessage/MBQMessage.h"
#include "MBQTestSupport.h"

namespace KTR {
namespace testing {

// `text`, a message whose root is a record of `type`, is valid against the published schemas.
inline void expectSchemaValid(const KTRRecordType& type, const std::string& text) {
  std::string error;
  const MBQ::MBQSchemaSet* schemas = recordSchemas(&error);
  ASSERT_NE(nullptr, schemas) << error;
  std::vector<MBQ::MBQSchemaProblem> problems;
  schemas->validate(text, type.ns, type.publishedType, problems);
  for (const MBQ::MBQSchemaProblem& problem : problems)
    ADD_FAILURE() << type.name << " as written is not valid: line " << problem.line << ": " << problem.text << "\n"
                  << text;
}

// A record whose writer declares a schema type, written on its own, is valid against the
// published schemas as the catalog's record of that type.
template <class T, class Writer>
void expectWritesValid(const T& record, const Writer& writer) {
  MBQ::MBQMessage message("r");
  std::string declared;
  if (message.iterator()->putObject(record, writer) != 0 || message.iterator()->getSchemaType(declared) != 0) return;
  if (const KTRRecordType* type = findRecordTypeBySchema(declared)) expectSchemaValid(*type, message.toString(true));
}

class RecordTest : public ::testing::Test {
 protected:
  using Texts = std::vector<std::string>;

  // The record written into a fresh message, as text; `rc` receives the writer's result
  // (without it the writer must succeed).
  template <class T, class Writer = typename T::Writer>
  std::string write(const T& record, int* rc = nullptr, const Writer& writer = Writer()) {
    MBQ::MBQMessage message;
    auto it = message.iterator();
    EXPECT_EQ(0, it->addChildAndDescend("r"));
    const int result = it->putObject(record, writer);
    if (rc != nullptr) {
      *rc = result;
    } else {
      EXPECT_EQ(0, result);
      expectWritesValid(record, writer);
    }
    return message.toString();
  }
  // A cursor on "r" of the parsed text; the message lives as long as the fixture.
  MBQ::MBQMessageIterator& at(const std::string& text) {
    messages_.push_back(std::make_unique<MBQ::MBQMessage>());
    EXPECT_EQ(0, messages_.back()->parse(text)) << text;
    cursors_.push_back(messages_.back()->iterator());
    EXPECT_EQ(0, cursors_.back()->descend("r")) << text;
    return *cursors_.back();
  }
  template <class T, class Reader = typename T::Reader>
  int read(const std::string& text, T& record, const Reader& reader = Reader()) {
    return reader(at(text), record);
  }
  // A document whose element "r" holds `body`.
  static std::string doc(const std::string& body) { return "<message><r>" + body + "</r></message>"; }
  static Texts childNames(const MBQ::MBQMessageIterator& it) {
    Texts names;
    if (it.descendFirst() == 0) {
      do names.push_back(it.getName());
      while (it.nextSibling() == 0);
      it.up();
    }
    return names;
  }
  // The first occurrence of `from` replaced; the test fails when there is none.
  static std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto pos = text.find(from);
    EXPECT_NE(std::string::npos, pos) << from;
    if (pos != std::string::npos) text.replace(pos, from.size(), to);
    return text;
  }

 private:
  std::vector<std::unique_ptr<MBQ::MBQMessage>> messages_;
  std::vector<std::unique_ptr<MBQ::MBQMessageIterator>> cursors_;
};

using MBQ::test::LogCapture;
using MBQ::test::slurp;
using MBQ::test::TempDir;

// The lines of `text`, without their ends.
inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

// A vocabulary loaded from `text` (the load must succeed).
inline MBQ::MBQVocMapSP vocabularyFrom(const std::string& text) {
  auto vocabulary = std::make_shared<MBQ::MBQVocMap>();
  EXPECT_EQ(0, vocabulary->load(text)) << MBQ::getErrorMessage();
  return vocabulary;
}

}  // namespace testing
}  // namespace KTR
