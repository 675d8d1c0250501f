#pragma once

// Reading a container file as the agent does, shared by the commands that take one.

#include <string>
#include <utility>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTREnvConfigBashParser.h"
#include "MBQFunctionalityCore/MBQVocMap.h"
#include "ktrctlOutput.h"

namespace ktrctl {

using Assignments = std::vector<std::pair<std::string, std::string>>;

// What a command works with: the options, the vocabulary chosen by them and its file parser.
struct Session {
  const Options& options;
  KTR::KTREnvConfigBashParserSP parser;
  MBQ::MBQVocMapSP vocabulary;
};

// Loads the vocabulary (--vocab, else the built-in one) and makes its parser. kOk, or kError
// with the error line printed.
int openParser(const Options& options, Session& session);

// Reads a container file's text as the agent does, applying `changes` after the file's own
// lines as if they were further lines of it (each value checked strictly first). kOk, or
// kError with the error line printed.
int readContainer(Session& session, const std::string& path, const std::string& text, const Assignments& changes,
                  KTR::KTREnvConfig& config);

// The same for the file at `path`, without changes.
int loadContainer(Session& session, const std::string& path, KTR::KTREnvConfig& config);

}  // namespace ktrctl
