#include "ktrctlHelp.h"

#include <cstdio>
#include <sstream>

namespace ktrctl {

const char* const kDescription =
    "ktrctl is the node operator's tool for the configuration files of the node's quellix containers, its "
    "global configuration file and any file of shell variable assignments, for the shared template cache of the "
    "agent's processes and for the messages the agent exchanges. It reads files as the agent reads them, and "
    "edits only what it is told: every other line of a file stays byte for byte, values are written so that "
    "bash reads them back exactly, and files are replaced atomically under a lock.\n\n"
    "Options may stand anywhere before --; after it nothing is an option. A command on one file takes FILE "
    "ITEM...; get, set, raw and global also take several files and folders (a folder stands for its *.conf "
    "files) as FILE|DIR... -- ITEM..., and validate and check take FILE|DIR.... With several files, every output "
    "line starts with the file's name.";

const CommandHelp kCommands[] = {
    {"read", "CONF", "print CONF as the agent's XML message",
     "Reads the container file CONF as the agent does and prints the configuration record as the XML message the "
     "agent would send. A value that XML cannot carry (bytes that are not UTF-8 text, control characters) is an "
     "error naming its line.",
     "--vocab"},
    {"get", "CONF [KEY...]", "print the values bash assigns to the KEYs",
     "Prints KEY=\"value\" for each KEY, with the value bash assigns when it reads CONF (the last assignment of a "
     "key wins) and quoted as set writes it, so each line is itself an assignment of that value. Keys are matched "
     "without regard to case and printed upper case. Without KEYs, every key of the container the file assigns, in "
     "file order.\n\nExit 1 when a KEY has no assignment in the file; an unknown KEY is an error (raw get reads "
     "any key). Several files and folders (their *.conf files): get FILE|DIR... -- [KEY...], each line then "
     "starting with \"FILE: \".",
     "--vocab"},
    {"set", "CONF KEY=VALUE...", "change the KEYs' lines of CONF, atomically",
     "Changes only the assignment lines of the KEYs named (every line of a key assigned several times) and appends "
     "the KEYs the file lacks; every other line stays byte for byte. The values are written in double quotes with "
     "\\, \", $ and ` escaped, so that bash assigns exactly the VALUE given; the container-id placeholder $VEID "
     "stays a placeholder. KEY= writes KEY=\"\" and so clears a text or list value; a flag or number needs a "
     "value.\n\nBefore anything is written, the whole file is read as the agent reads it with the new values, and "
     "each VALUE must read back as given: a flag is yes or no, a number is a number the key can hold, a NETIF, "
     "DISK or address list holds nothing the agent would drop. An unknown KEY, a KEY that is not a shell name, a "
     "VALUE holding a line break or NUL byte, and a file with DOS line ends or a line that assigns a KEY through "
     "an expansion are refused; the file is then left as it was.\n\nThe file is replaced atomically: the new text "
     "goes to a temporary file in the same folder (.ktr-edit-*), which gets the file's owner, group, mode and "
     "extended attributes and is renamed over it. A symbolic link is followed and stays a link. Writers lock the "
     "file itself, so concurrent sets never lose each other's changes.\n\nSeveral files and folders (their *.conf "
     "files): set FILE|DIR... -- KEY=VALUE.... Every file is read and checked before any is written; then each is "
     "replaced on its own, the flushes to disk done together. A file that fails is named in one error line and "
     "left as it was, and the others go on; the exit status is then 2.",
     "--vocab --dry-run --as-agent --wait"},
    {"diff", "OLD NEW", "print what the agent would write differently for NEW",
     "Compares the two container files as the agent writes them and prints KEY=\"value\" for every key whose "
     "written value NEW changes or adds, and \"unset KEY\" for every key OLD has and NEW lacks, so that the output "
     "is itself a script of the change. Exit 1 when there is any difference.",
     "--vocab"},
    {"validate", "CONF|DIR...", "check resource values against the vocabulary's formulas",
     "Prints one line per violated formula, \"ID: FORMULA: NAME[,NAME...]: MESSAGE\" (\"FILE: \" first when "
     "there are several files), and exits 1 when there is any. A container with SLMMODE=\"slm\" is only checked "
     "for SLMMEMORYLIMIT. A formula reading a parameter the file does not set is an error.",
     "--vocab"},
    {"check", "[CONF|DIR...]", "report every inconsistency of a node's container files",
     "Prints one line per finding, \"FILE:LINE: what\": lines that are not readable assignments, keys assigned "
     "again, values the agent would read as something else (as set refuses them), violated formulas (at the line of the first parameter the formula reads), and values two containers "
     "hold: an IPv4 or IPv6 address, a MAC address, a UUID, a hostname, a disk image or a private area ($VEID "
     "standing for the file's name without .conf), reported at the later container with the file and line "
     "holding it first. Files come in the order given, folders as their *.conf files in name order; the default "
     "is the current folder. Exit 1 when there is any finding.",
     "--vocab"},
    {"raw get", "FILE [KEY...]", "print the values bash assigns in any KEY=\"value\" file",
     "As get, for any file of shell variable assignments: keys are matched without regard to case and printed as "
     "the file spells them; without KEYs, every assigned key in file order.",
     ""},
    {"raw set", "FILE KEY=VALUE...", "change the KEYs' lines of any such file, atomically",
     "As set, without a container record: any shell variable name may be set. Appended keys keep the spelling "
     "given; a KEY the file spells in another case is refused (bash would read two variables).",
     "--dry-run --wait"},
    {"global get", "FILE [KEY...]", "print values of the node's global configuration file",
     "As raw get, but with the value the agent reads: of a key assigned more than once, the first (the last for "
     "LOCKDIR and TEMPLATE, as bash reads them).",
     ""},
    {"global set", "FILE KEY=VALUE...", "change values of the node's global configuration file",
     "As raw set, but a KEY is matched in any spelling, as the agent matches it, and appended keys are written "
     "upper case. Every line assigning a KEY is rewritten, so the agent and bash read the same value.",
     "--dry-run --wait"},
    {"cache stat", "[PATH]", "print the shared template cache's header and heap figures",
     "Reads the template cache file (PATH, default template.cache in the uploads folder: $MBQ_UPLOADS_DIR, else "
     "/opt/srn/agent/uploads) through a read-only mapping and prints its header and heap figures, and how many "
     "problems cache check would report. Never changes, removes or creates the file.",
     ""},
    {"cache check", "[PATH]", "check the shared template cache file",
     "Verifies the cache file read-only, as the agent does when it opens it: header, every heap block, the free "
     "list, the snapshot and its records, reference counts and value checksums. One line per problem (exit 1), "
     "or one \"ok\" line. Exit 2 when the file is missing, unreadable or stays locked.",
     ""},
    {"cache reset", "[PATH]", "remove the shared template cache file and make a new, empty one",
     "Removes the cache file under its lock, whatever its state, and creates an empty cache in its place, as the "
     "agent does with a file it finds damaged. Processes that use the old file let go of it at their next access.",
     ""},
    {"msg types", "", "list every record the library reads and writes",
     "One line per record: class, schema type (\"-\" without one) and namespace, tab-separated.", ""},
    {"msg tags", "", "print the tag table", "One \"ID NAME\" line per numeric tag, in id order.", ""},
    {"msg read", "[--as CLASS] FILE", "read a message record and print it as written back",
     "Reads the record FILE holds (the class named, or the one its root element's schema type names), writes it "
     "back with the record's own writer and prints that XML.",
     ""},
    {"msg validate", "[--as CLASS] [--schemas DIR] FILE...", "check messages against the published schemas",
     "Validates each FILE against the schemas of the library's messages (built in; --schemas reads the *.xsd files "
     "of DIR instead, such as share/KTRFunctionality/schema). The root element is taken as the schema type it "
     "declares (xsi:type), or as the type of the record class named with --as. One \"FILE:LINE: problem\" line per "
     "problem; nothing for a valid file (with --verbose, \"FILE: valid\"). Exit 1 when a file is invalid or not "
     "well-formed XML, 2 when a file cannot be read, its root declares no type and no --as is given, or the "
     "schemas do not load.",
     "--verbose"},
    {"help", "[COMMAND]", "print the usage, or one command's help", "", ""},
};
const std::size_t kCommandCount = sizeof kCommands / sizeof kCommands[0];

const OptionHelp kOptions[] = {
    {"--vocab", "FILE", "the vocabulary (XML) to use instead of the built-in one"},
    {"--dry-run", "", "print the change as a unified diff and write nothing"},
    {"--as-agent", "",
     "write the whole file as the agent's writer does: every key the record knows rewritten from it, in double "
     "quotes without escaping"},
    {"--wait", "SECONDS", "how long to wait for another writer's lock before giving up (default 10)"},
    {"--verbose", "",
     "also report on stderr the keys a read skips and the library's log messages (msg validate: also "
     "\"FILE: valid\" on stdout)"},
    {"--help", "", "print the usage, or with a command its help (also -h)"},
    {"--version", "", "print the version of ktrctl, and the soname and version of the library it loads"},
};
const std::size_t kOptionCount = sizeof kOptions / sizeof kOptions[0];

const char* const kExitStatus =
    "0 success; 1 a negative answer (a key without a value, differences or violations found, a damaged cache "
    "file); 2 an error, reported in one line on stderr starting with \"ktrctl: \".";

const NamedHelp kFiles[] = {
    {"/opt/srn/agent/share/KTRFunctionality/vocabulary.xml",
     "the default vocabulary, as built into the library: a starting point for a vocabulary of one's own (--vocab)"},
    {"/opt/srn/agent/lib/ktrctl/ktrctl-records.so",
     "the module that ktrctl loads for the commands that need the container records, the vocabulary, messages "
     "or the template cache"},
    {"/opt/srn/agent/uploads/template.cache", "the template cache shared by the agent's processes (cache commands)"},
    {".ktr-edit-*",
     "the temporary file beside a file being changed; a writer that was killed leaves it behind, and the next "
     "writer of that file removes it"},
};
const std::size_t kFileCount = sizeof kFiles / sizeof kFiles[0];

const NamedHelp kEnvironment[] = {
    {"MBQ_UPLOADS_DIR", "the uploads folder holding the template cache, instead of /opt/srn/agent/uploads"},
};
const std::size_t kEnvironmentCount = sizeof kEnvironment / sizeof kEnvironment[0];

namespace {

// Prints `text` wrapped at `width` columns, every line after `indent`; paragraphs are separated
// by "\n\n" in the tables and by an empty line on output. With `hanging`, the caller has already
// printed the first line's indent (a label column).
void printWrapped(const std::string& text, const std::string& indent, bool hanging = false,
                  std::size_t width = 78) {
  std::string::size_type begin = 0;
  bool firstLine = true;
  while (begin <= text.size()) {
    std::string::size_type end = text.find("\n\n", begin);
    if (end == std::string::npos) end = text.size();
    if (begin > 0) std::printf("\n");
    std::istringstream words(text.substr(begin, end - begin));
    begin = end + 2;
    std::string word;
    std::string line;
    auto flush = [&] {
      std::printf("%s%s\n", firstLine && hanging ? "" : indent.c_str(), line.c_str());
      firstLine = false;
      line.clear();
    };
    while (words >> word) {
      if (!line.empty() && indent.size() + line.size() + 1 + word.size() > width) flush();
      line += (line.empty() ? "" : " ") + word;
    }
    if (!line.empty()) flush();
  }
}

// "  --wait SECONDS   summary..." with the summary wrapped under itself.
void printOption(const OptionHelp& option) {
  std::string head = std::string(option.name) + (option.argument[0] ? " " : "") + option.argument;
  std::printf("  %-17s ", head.c_str());
  printWrapped(option.summary, std::string(20, ' '), true);
}

}  // namespace

const CommandHelp* findCommand(const std::string& name) {
  for (std::size_t i = 0; i < kCommandCount; ++i)
    if (name == kCommands[i].name) return &kCommands[i];
  return nullptr;
}

bool takesOption(const std::string& command, const std::string& option) {
  for (std::size_t i = 0; i < kCommandCount; ++i) {
    const std::string name = kCommands[i].name;
    if (name != command && name.compare(0, command.size() + 1, command + " ") != 0) continue;
    std::istringstream options(kCommands[i].options);
    std::string taken;
    while (options >> taken)
      if (taken == option) return true;
  }
  return false;
}

void printUsage() {
  std::printf("usage: ktrctl [OPTIONS] COMMAND ARGS...\n\nCommands:\n");
  for (std::size_t i = 0; i < kCommandCount; ++i) {
    std::string head = std::string(kCommands[i].name) + " " + kCommands[i].synopsis;
    if (head.size() > 30) {
      std::printf("  %s\n  %-30s %s\n", head.c_str(), "", kCommands[i].summary);
    } else {
      std::printf("  %-30s %s\n", head.c_str(), kCommands[i].summary);
    }
  }
  std::printf("\nA command on one file takes FILE ITEM...; get, set, raw and global take several files and\n"
              "folders (their *.conf files) as FILE|DIR... -- ITEM..., so that a path is never read as an item.\n");
  std::printf("\nOptions (anywhere before --):\n");
  for (std::size_t i = 0; i < kOptionCount; ++i) printOption(kOptions[i]);
  std::printf("\nExit status:\n");
  printWrapped(kExitStatus, "  ");
  std::printf("\n'ktrctl help COMMAND' tells more about a command.\n");
}

void printCommandHelp(const CommandHelp& command) {
  std::printf("usage: ktrctl %s%s%s\n\n", command.name, command.synopsis[0] != '\0' ? " " : "", command.synopsis);
  printWrapped(command.summary, "  ");
  if (command.details[0] != '\0') {
    std::printf("\n");
    printWrapped(command.details, "  ");
  }
  std::istringstream options(command.options);
  std::string name;
  bool any = false;
  while (options >> name) {
    for (std::size_t i = 0; i < kOptionCount; ++i) {
      if (name != kOptions[i].name) continue;
      if (!any) std::printf("\nOptions:\n");
      any = true;
      printOption(kOptions[i]);
    }
  }
  std::printf("\nExit status:\n");
  printWrapped(kExitStatus, "  ");
}

}  // namespace ktrctl
