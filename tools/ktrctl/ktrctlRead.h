#pragma once

// Reading a container file as the agent does, and checking values given on the command line,
// shared by the commands that take container files.

#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "MBQFunctionalityCore/MBQVocMap.h"
#include "ktrctlOutput.h"

namespace ktrctl {

using Assignments = std::vector<std::pair<std::string, std::string>>;  // (lower-case key, value)

// What a command works with: the options, the vocabulary chosen by them and its file parser.
struct Session {
  const Options& options;
  KTR::KTREnvConfigBashParserSP parser;
  MBQ::MBQVocMapSP vocabulary;
};

// Loads the vocabulary (--vocab, else the built-in one) and makes its parser. kOk, or kError
// with the error line printed.
int openParser(const Options& options, Session& session);

// Whether `key` (lower case) is a key of the container's file: one of the fixed keys or a
// resource of the vocabulary.
bool isContainerKey(const Session& session, const std::string& key);

// Checks a value given on the command line for `key` (lower case): it must parse, and read
// back as given, so that the agent holds exactly what the operator wrote (a flag is yes or no,
// a number one the key can hold without rounding or saturating, a list with nothing the record
// drops). kOk, or kError with the error line printed.
int checkValue(const Session& session, const std::string& path, const std::string& key, const std::string& value);

// The container keys (lower case) whose value, as `text` last assigns it, `config` (the text as
// the agent read it) does not hold as written, each with "the agent would read this as ...": the
// rule checkValue applies to a value given on the command line.
std::vector<std::pair<std::string, std::string>> misreadings(const Session& session, const KTR::KTREnvConfig& config,
                                                             const std::string& text);

// Reads a container file's text as the agent does, applying `changes` after the file's own
// lines as if they were further lines of it. kOk, or kError with the error line printed.
int readContainer(Session& session, const std::string& path, const std::string& text, const Assignments& changes,
                  KTR::KTREnvConfig& config);

// The same for the file at `path`, without changes.
int loadContainer(Session& session, const std::string& path, KTR::KTREnvConfig& config);

}  // namespace ktrctl
