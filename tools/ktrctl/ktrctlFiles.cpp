#include "ktrctlFiles.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <vector>

namespace ktrctl {

int expandFiles(const Args& paths, Args& files) {
  std::set<std::string> seen;
  auto add = [&](const std::string& file) {
    if (seen.insert(file).second) files.push_back(file);
  };
  for (const std::string& path : paths) {
    struct stat info;
    if (::stat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) {
      add(path);  // a missing or odd path is the command's to report, in its place
      continue;
    }
    DIR* folder = ::opendir(path.c_str());
    if (folder == nullptr) return fail("cannot read the folder " + path + ": " + std::strerror(errno));
    std::vector<std::string> names;
    while (const dirent* entry = ::readdir(folder)) {
      const std::string name = entry->d_name;
      if (name.size() > 5 && name.compare(name.size() - 5, 5, ".conf") == 0 && name[0] != '.') names.push_back(name);
    }
    ::closedir(folder);
    // A folder without a single file is most likely the wrong folder: saying nothing would
    // look like success.
    if (names.empty()) return fail("the folder " + path + " holds no *.conf file");
    std::sort(names.begin(), names.end());
    const std::string prefix = path.back() == '/' ? path : path + "/";
    for (const std::string& name : names) add(prefix + name);
  }
  return kOk;
}

std::string linePrefix(const Args& files, const std::string& file) {
  return files.size() > 1 ? file + ": " : "";
}

}  // namespace ktrctl
