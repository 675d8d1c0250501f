// Writes ktrctl's manual page (roff) or its bash completion from the same tables that --help
// prints, so that the three cannot tell different stories. Run at build time:
//   ktrctl-manual man > ktrctl.1
//   ktrctl-manual completion > ktrctl.bash-completion

#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "ktrctlHelp.h"

namespace {

using ktrctl::kCommandCount;
using ktrctl::kCommands;
using ktrctl::kOptionCount;
using ktrctl::kOptions;

// Text for roff: backslashes escaped, hyphens of options unbreakable minus signs, and no line
// starting with a control character.
std::string roff(const std::string& text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\\') {
      out += "\\e";
    } else if (c == '-') {
      out += "\\-";
    } else if (c == '\n') {
      out += '\n';
      if (i + 1 < text.size() && (text[i + 1] == '.' || text[i + 1] == '\'')) out += "\\&";
    } else {
      out += c;
    }
  }
  if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out = "\\&" + out;
  return out;
}

// A table paragraph ("\n\n" between paragraphs) as roff paragraphs, each after the first begun
// with `macro` (".PP" at the left margin, ".IP" within a tagged entry).
std::string paragraphs(const std::string& text, const char* macro = ".IP") {
  std::string out;
  std::string::size_type begin = 0;
  while (begin < text.size()) {
    std::string::size_type end = text.find("\n\n", begin);
    if (end == std::string::npos) end = text.size();
    if (begin > 0) out += std::string(macro) + "\n";
    out += roff(text.substr(begin, end - begin)) + "\n";
    begin = end + 2;
  }
  return out;
}

void manual() {
  std::printf(".TH KTRCTL 1 \"%s\" \"ktrctl %s\" \"User Commands\"\n", KTRCTL_DATE, KTRCTL_VERSION);
  std::printf(".SH NAME\nktrctl \\- read, check and edit a node's container configuration files\n");
  std::printf(".SH SYNOPSIS\n.B ktrctl\n[\\fIOPTIONS\\fR] \\fICOMMAND\\fR \\fIARGS\\fR...\n");
  std::printf(".SH DESCRIPTION\n%s", paragraphs(ktrctl::kDescription, ".PP").c_str());
  std::printf(".SH COMMANDS\n");
  for (std::size_t i = 0; i < kCommandCount; ++i) {
    std::printf(".TP\n\\fB%s\\fR %s\n", roff(kCommands[i].name).c_str(), roff(kCommands[i].synopsis).c_str());
    std::string text = std::string(kCommands[i].summary) + ".";
    if (kCommands[i].details[0] != '\0') text += std::string("\n\n") + kCommands[i].details;
    if (kCommands[i].options[0] != '\0') text += std::string("\n\nOptions: ") + kCommands[i].options + ".";
    std::printf("%s", paragraphs(text).c_str());
  }
  std::printf(".SH OPTIONS\n");
  for (std::size_t i = 0; i < kOptionCount; ++i) {
    std::printf(".TP\n\\fB%s\\fR", roff(kOptions[i].name).c_str());
    if (kOptions[i].argument[0] != '\0') std::printf(" \\fI%s\\fR", kOptions[i].argument);
    std::printf("\n%s\n", roff(kOptions[i].summary).c_str());
  }
  std::printf(".SH EXIT STATUS\n%s\n", roff(ktrctl::kExitStatus).c_str());
  std::printf(".SH FILES\n");
  for (std::size_t i = 0; i < ktrctl::kFileCount; ++i)
    std::printf(".TP\n\\fI%s\\fR\n%s\n", roff(ktrctl::kFiles[i].name).c_str(), roff(ktrctl::kFiles[i].summary).c_str());
  std::printf(".SH ENVIRONMENT\n");
  for (std::size_t i = 0; i < ktrctl::kEnvironmentCount; ++i)
    std::printf(".TP\n\\fB%s\\fR\n%s\n", roff(ktrctl::kEnvironment[i].name).c_str(),
                roff(ktrctl::kEnvironment[i].summary).c_str());
}

// A bash completion: command words, then the command's options and files.
void completion() {
  std::set<std::string> firstWords;
  std::ostringstream cases;
  for (std::size_t i = 0; i < kCommandCount; ++i) {
    const std::string name = kCommands[i].name;
    firstWords.insert(name.substr(0, name.find(' ')));
  }
  std::printf("# bash completion for ktrctl; generated from its command table, do not edit.\n");
  std::printf("_ktrctl() {\n");
  std::printf("  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}\n");
  std::printf("  local words=() i\n");
  std::printf("  for ((i = 1; i < COMP_CWORD; i++)); do\n");
  std::printf("    case ${COMP_WORDS[i]} in --vocab|--wait) ((i++));; --) break;; -*) ;; *) words+=(\"${COMP_WORDS[i]}\");; esac\n");
  std::printf("  done\n");
  std::printf("  case $prev in\n    --vocab) COMPREPLY=($(compgen -f -- \"$cur\")); return;;\n    --wait) return;;\n  esac\n");
  std::printf("  local command=${words[0]}\n");
  std::printf("  case $command in raw|global|cache|msg|help) [[ ${#words[@]} -ge 2 ]] && command+=\" ${words[1]}\";; esac\n");
  std::printf("  if [[ $cur == -* ]]; then\n    local options=\"--help --verbose --version\"\n    case $command in\n");
  for (std::size_t i = 0; i < kCommandCount; ++i)
    if (kCommands[i].options[0] != '\0') std::printf("      \"%s\") options+=\" %s\";;\n", kCommands[i].name, kCommands[i].options);
  std::printf("    esac\n    COMPREPLY=($(compgen -W \"$options\" -- \"$cur\"))\n    return\n  fi\n");
  std::string first;
  for (const std::string& word : firstWords) first += (first.empty() ? "" : " ") + word;
  std::printf("  if [[ ${#words[@]} -eq 0 ]]; then\n    COMPREPLY=($(compgen -W \"%s\" -- \"$cur\"))\n    return\n  fi\n",
              first.c_str());
  std::printf("  if [[ ${#words[@]} -eq 1 ]]; then\n    case ${words[0]} in\n");
  for (const std::string& family : firstWords) {
    std::string second;
    for (std::size_t i = 0; i < kCommandCount; ++i) {
      const std::string name = kCommands[i].name;
      if (name.compare(0, family.size() + 1, family + " ") == 0) second += (second.empty() ? "" : " ") + name.substr(family.size() + 1);
    }
    if (family == "help") {
      std::printf("      help) COMPREPLY=($(compgen -W \"%s\" -- \"$cur\")); return;;\n", first.c_str());
    } else if (!second.empty()) {
      std::printf("      %s) COMPREPLY=($(compgen -W \"%s\" -- \"$cur\")); return;;\n", family.c_str(), second.c_str());
    }
  }
  std::printf("    esac\n  fi\n");
  std::printf("  COMPREPLY=($(compgen -f -- \"$cur\"))\n}\ncomplete -o filenames -F _ktrctl ktrctl\n");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "man") {
    manual();
  } else if (mode == "completion") {
    completion();
  } else {
    std::fprintf(stderr, "usage: ktrctl-manual man|completion\n");
    return 2;
  }
  return 0;
}
