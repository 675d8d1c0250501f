// Node-scale work through the ktrctl program, as an operator runs it, side by side with the
// physical floor (a bare C++ rewrite of one value span), with Augeas (augtool and its Shellvars
// lens, when installed) and with bash reading a file. Real time: processes and the kernel's file
// work are the point.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "NodeCorpus.h"

extern char** environ;

namespace {

// Runs a program with its output thrown away; gives its exit status (-1 when it could not run).
int run(const std::vector<std::string>& args, const std::string& input = "") {
  std::vector<char*> argv;
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  int pipeFds[2] = {-1, -1};
  if (!input.empty()) {
    if (::pipe(pipeFds) != 0) return -1;
    posix_spawn_file_actions_adddup2(&actions, pipeFds[0], 0);
    posix_spawn_file_actions_addclose(&actions, pipeFds[1]);
  }
  pid_t pid = 0;
  const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (!input.empty()) {
    ::close(pipeFds[0]);
    if (spawned == 0 && ::write(pipeFds[1], input.data(), input.size()) < 0) std::perror("write");
    ::close(pipeFds[1]);
  }
  if (spawned != 0) return -1;
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void countFiles(benchmark::State& state, const bench::NodeCorpus& corpus, int files) {
  state.counters["files/s"] = benchmark::Counter(static_cast<double>(state.iterations()) * files,
                                                 benchmark::Counter::kIsRate);
  state.SetBytesProcessed(static_cast<int64_t>(static_cast<double>(state.iterations()) * corpus.bytes() * files /
                                               bench::kNodeFiles));
}

// 1. One ktrctl set over the whole node, durable.
void BM_KtrctlSetNode(benchmark::State& state) {
  bench::NodeCorpus corpus;
  int round = 0;
  for (auto _ : state) {
    const std::string value = "CPULIMIT=" + std::to_string(30 + round++ % 50);
    if (run({KTRCTL_PATH, "set", corpus.dir(), "--", value}) != 0) state.SkipWithError("ktrctl set failed");
  }
  countFiles(state, corpus, bench::kNodeFiles);
}
BENCHMARK(BM_KtrctlSetNode)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

// 2. The physical floor: read each file, replace the value span, write a temporary and rename
// it; with `flush`, each temporary is flushed and the folder once, as a durable edit must.
void bareRewrite(benchmark::State& state, bool flush) {
  bench::NodeCorpus corpus;
  int round = 0;
  for (auto _ : state) {
    const std::string value = "\"" + std::to_string(30 + round++ % 50) + "\"";
    for (const std::string& path : corpus.paths()) {
      std::ifstream in(path, std::ios::binary);
      std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      const std::string::size_type key = text.find("\nCPULIMIT=");
      const std::string::size_type begin = key + 10;
      text.replace(begin, text.find('\n', begin) - begin, value);
      const std::string temporary = path + ".tmp";
      const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
      if (fd < 0 || ::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()) ||
          (flush && ::fsync(fd) != 0) || ::close(fd) != 0 || ::rename(temporary.c_str(), path.c_str()) != 0)
        state.SkipWithError("write failed");
    }
    if (flush) {
      const int dir = ::open(corpus.dir().c_str(), O_RDONLY | O_DIRECTORY);
      ::fsync(dir);
      ::close(dir);
    }
  }
  countFiles(state, corpus, bench::kNodeFiles);
}
void BM_BareRewrite(benchmark::State& state) { bareRewrite(state, false); }
void BM_BareRewriteFlushed(benchmark::State& state) { bareRewrite(state, true); }
BENCHMARK(BM_BareRewrite)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);
BENCHMARK(BM_BareRewriteFlushed)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

// 3. Augeas, the same change on the same files (only when augtool is installed; it is never a
// dependency of the project).
void BM_AugeasSetNode(benchmark::State& state) {
  if (run({"augtool", "--version"}) != 0) {
    state.SkipWithError("augtool is not installed (Debian package augeas-tools)");
    for (auto _ : state) {
    }
    return;
  }
  bench::NodeCorpus corpus;
  int round = 0;
  for (auto _ : state) {
    const std::string script = "setm /files" + corpus.dir() + "/* CPULIMIT '\"" + std::to_string(30 + round++ % 50) +
                               "\"'\nsave\n";
    if (run({"augtool", "-A", "-t", "Shellvars incl " + corpus.dir() + "/*.conf"}, script) != 0)
      state.SkipWithError("augtool failed");
  }
  countFiles(state, corpus, bench::kNodeFiles);
}
BENCHMARK(BM_AugeasSetNode)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(2);

// 4. One process per file: ktrctl get against bash sourcing the file, 100 files each.
constexpr int kProcessFiles = 100;

void BM_KtrctlGetPerProcess(benchmark::State& state) {
  bench::NodeCorpus corpus;
  for (auto _ : state)
    for (int i = 0; i < kProcessFiles; ++i) run({KTRCTL_PATH, "get", corpus.paths()[i], "HOSTNAME"});
  countFiles(state, corpus, kProcessFiles);
}
BENCHMARK(BM_KtrctlGetPerProcess)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

void BM_BashSourcePerProcess(benchmark::State& state) {
  bench::NodeCorpus corpus;
  for (auto _ : state)
    for (int i = 0; i < kProcessFiles; ++i) run({"bash", "-c", "source '" + corpus.paths()[i] + "'"});
  countFiles(state, corpus, kProcessFiles);
}
BENCHMARK(BM_BashSourcePerProcess)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

// 5. One ktrctl check over the whole node.
void BM_KtrctlCheckNode(benchmark::State& state) {
  bench::NodeCorpus corpus;
  for (auto _ : state)
    if (run({KTRCTL_PATH, "check", corpus.dir()}) != 0) state.SkipWithError("check found something on a clean node");
  countFiles(state, corpus, bench::kNodeFiles);
}
BENCHMARK(BM_KtrctlCheckNode)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3);

}  // namespace
