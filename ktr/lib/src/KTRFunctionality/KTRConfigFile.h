#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

// Reading and replacing the node's configuration files safely.
//
// A file is replaced, never rewritten in place: the new text goes to a temporary file in the
// same folder, which is flushed to disk, given the old file's owner, group, mode (set-id bits
// included) and extended attributes, and renamed over the old name. Readers therefore see
// either the old or the new text, and a failure at any step leaves the old file as it was.
//
// Only regular files are read or edited: a FIFO, device or folder is refused at once, without
// blocking on it. A symbolic link is followed: the file it names is edited and stays where it
// is, and the link stays a link.
//
// Files above kMaxConfigFileSize are refused: a container's file is a few kilobytes, and the
// bound keeps the memory of a read (twice the file at most) in check whatever the file holds.

constexpr std::size_t kMaxConfigFileSize = std::size_t(8) << 20;

// Reads the whole file. Returns 0, or -1 with the error text "cannot read <path>: <reason>".
KTR_EXPORT int readConfigFile(const std::string& path, std::string& text);

// Replaces the file with `text` (following a symbolic link, keeping its attributes); a file
// that does not exist yet is created with mode 0644 less the umask. Takes no lock: callers that
// read, change and write back a file use KTRConfigFileEdit. Returns 0, or -1 with the error text
// saying what failed.
KTR_EXPORT int replaceConfigFile(const std::string& path, const std::string& text);

// Flushes a folder, so that renames into it survive a crash. Returns 0 or -1 (error text).
KTR_EXPORT int syncFolder(const std::string& folder);

// One read-modify-write of an existing file, from begin() to commit() (or destruction).
//
// Writers exclude each other with an open-file-description write lock (fcntl F_OFD_SETLK) on
// the file itself, opened for writing: only a user who may write the file can take it, nothing
// is left beside the file, and the kernel drops the lock when its holder dies. Once locked,
// begin() checks that the path still names the locked file and starts over when a concurrent
// writer replaced it meanwhile. The wait is bounded: a lock that is not free within the given
// time is an error, never a hang. (A reader of the file can still delay writers by holding a
// read lock on it; they then fail with that error when their wait ends.)
//
// The temporary is ".ktr-edit-<16 hex digits>" in the file's folder, the digits a hash of the
// file's name: a writer that is killed leaves at most that one file behind, and the next writer
// of the same file, which holds the lock, removes it.
class KTR_EXPORT KTRConfigFileEdit {
 public:
  KTRConfigFileEdit() = default;
  ~KTRConfigFileEdit();  // releases the lock and removes an uninstalled temporary
  KTRConfigFileEdit(const KTRConfigFileEdit&) = delete;
  KTRConfigFileEdit& operator=(const KTRConfigFileEdit&) = delete;

  // Resolves `path`, locks the file (waiting at most `waitMilliseconds`) and reads its text.
  // Returns 0, or -1 with the error text set ("cannot edit <path>: <reason>").
  int begin(const std::string& path, unsigned waitMilliseconds);

  const std::string& path() const { return target_; }  // the file edited: a link's target
  const std::string& folder() const { return folder_; }
  const std::string& text() const { return text_; }

  // Writes `newText` to the temporary and gives it the file's attributes; with `flush`, also
  // flushes it to disk (else flushTemporary() must, before install()).
  int prepare(const std::string& newText, bool flush = true);
  // Flushes the prepared temporary to disk. Safe to call from another thread than the others.
  int flushTemporary() const;
  // Renames the prepared temporary over the file; the folder still needs syncFolder() to make
  // the rename durable (callers editing many files flush each folder once).
  int install();
  // prepare(), install() and syncFolder(folder()).
  int commit(const std::string& newText);

 private:
  void discardTemporary();

  int fd_ = -1;
  std::string target_;
  std::string folder_;
  std::string temporary_;  // set from prepare() until install()
  std::string text_;
  struct stat info_ {};  // of the locked file
};

// One file of commitConfigFiles: an edit begun, its new text, and after the call the error
// text of its failure (empty when the file was replaced).
struct KTRConfigFileChange {
  KTRConfigFileEdit* edit;
  std::string text;
  std::string error;
};

// Replaces many edited files, each atomically and on its own, with the flushes grouped: every
// temporary is written, then all are flushed together (several at a time, so that the disk can
// take them in one go), then each is renamed over its file, then each folder is flushed once. A
// change that fails at any step gets its error text and leaves its file as it was; the others
// go on. A change whose text equals the file's is not written. Returns the number of failures.
KTR_EXPORT int commitConfigFiles(std::vector<KTRConfigFileChange>& changes);

// Splits "KEY=VALUE" at the first "=". Returns 0, or -1 when there is no "=" or the key is
// empty.
KTR_EXPORT int splitAssignment(const std::string& text, std::string& key, std::string& value);

}  // namespace KTR
