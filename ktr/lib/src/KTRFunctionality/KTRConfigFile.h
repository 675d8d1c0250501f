#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"

namespace KTR {

// Reading and replacing the node's configuration files safely.
//
// A file is replaced, never rewritten in place: the new text goes to a temporary file in the
// same folder, which is flushed to disk, given the old file's permissions and renamed over the
// old name. Readers therefore see either the old or the new text, and a failure at any step
// leaves the old file as it was.
//
// Writers exclude each other with an advisory lock on a lock file beside the file ("<file>.lock",
// created when missing and never removed: removing it would let two writers lock different
// files). The lock is held for the whole read-modify-write, so concurrent edits of one file are
// applied one after the other and none is lost. The kernel drops the lock when its holder dies.

// Reads the whole file. Returns 0, or -1 with the error text "cannot read <path>: <reason>".
KTR_EXPORT int readConfigFile(const std::string& path, std::string& text);

// Replaces the file with `text` as described above; a file that does not exist yet is created
// with mode 0644 (less the umask). Returns 0, or -1 with the error text saying what failed.
KTR_EXPORT int replaceConfigFile(const std::string& path, const std::string& text);

// The writers' lock of one file, held from a successful lock() until destruction.
class KTR_EXPORT KTRConfigFileLock {
 public:
  KTRConfigFileLock() = default;
  ~KTRConfigFileLock();
  KTRConfigFileLock(const KTRConfigFileLock&) = delete;
  KTRConfigFileLock& operator=(const KTRConfigFileLock&) = delete;

  // Waits for the lock of `path`. Returns 0, or -1 with the error text set.
  int lock(const std::string& path);

 private:
  int fd_ = -1;
};

// Splits "KEY=VALUE" at the first "=". Returns 0, or -1 when there is no "=" or the key is
// empty.
KTR_EXPORT int splitAssignment(const std::string& text, std::string& key, std::string& value);

}  // namespace KTR
