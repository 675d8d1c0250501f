#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQVocMap.h"

namespace KTR {

// The vocabulary built into the library: ktr/lib/share/vocabulary.xml as it was at build time
// (its format and contents are described in docs/vocabulary.md). Loaded on first use, once,
// safely from any thread, and shared by every caller: it is read-only, never load() into it.
// Null only if the built-in text does not load, a build defect the library's tests rule out;
// the error text then says why.
KTR_EXPORT MBQ::MBQVocMapSP defaultVocabulary();

// The built-in vocabulary's text, for operators who start their own from it.
KTR_EXPORT const std::string& defaultVocabularyText();

// Checks what this library needs of a vocabulary, beyond the structure MBQVocMap checks:
// - a category "qos" under the technology "quellix", with at least one parameter;
// - each "qos" parameter declares a value format the configuration files can hold:
//   value_type/complexity 2/1 (barrier:limit), 1/1 (integer) or 1/0 (percentage); a missing
//   value_type means 1 and a missing complexity 2, so complexity must always be given; both
//   must be integers when present;
// - no "qos" parameter is named "QOS", the name formulas use for every resource;
// - if the technology has a category "tune", each of its formulas has an integer id
//   (type), a formula text (formula) and a message (formula_info); formulas without one of
//   them would otherwise be skipped without a word;
// - every formula parses (KTRQVTune::formFormula: the grammar, known parameter names, at most
//   one multiple name), and the parameters are few enough to be indexed.
// 0 when all holds; -1 with the error text
// "invalid vocabulary: <where>: <what>" naming the first problem.
KTR_EXPORT int checkVocabulary(const MBQ::MBQVocMap& vocabulary);

// A vocabulary read from a file (ktrctl's --vocab): a new object on each call, loaded with
// MBQVocMap::loadFile and checked with checkVocabulary. Null on failure, with the error text
// prefixed by the path.
KTR_EXPORT MBQ::MBQVocMapSP loadVocabulary(const std::string& path);

}  // namespace KTR
