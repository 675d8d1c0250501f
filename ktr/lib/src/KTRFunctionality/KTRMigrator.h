#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQOperatorRecords.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The migration service's records: the options of a clone or move request and the notes of
// its capacity check. Both derive from core records and are registered with the core base's
// derived-parser registry under their relocator-namespace types.
//
// Only a failing core part fails a reader (-1); every other element is read when it is there
// and leaves its field as it was otherwise.

namespace KTR {

// Schema type "clone_optionsType" (relocator namespace). Layout: the MBQMigratorCloneOptions
// elements (req), clone_flag (true exactly when present; always assigned; written empty only
// when specified and true), env_config, the clone's configuration, one veid per container id.
//
// Reading never leaves the configuration null (a message without env_config gets an empty one) and
// adds the ids to the set: ids already there stay, each id is there once.
class KTR_EXPORT KTRMigratorCloneOptions : public MBQ::MBQMigratorCloneOptions {
 public:
  const MBQ::MBQOptionalProperty<bool>& getFlag() const { return flag_; }
  void setFlag(const MBQ::MBQOptionalProperty<bool>& flag) { flag_ = flag; }
  const std::shared_ptr<KTREnvConfig>& getConfig() const { return config_; }
  void setConfig(const std::shared_ptr<KTREnvConfig>& config) { config_ = config; }
  const std::set<std::string>& getIds() const { return ids_; }
  void setIds(const std::set<std::string>& ids) { ids_ = ids; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRMigratorCloneOptions& options) const;
  };
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kRelocatorNamespace; }
    const char* getStrTypeID() const { return "clone_optionsType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRMigratorCloneOptions& options) const;
  };

 private:
  MBQ::MBQOptionalProperty<bool> flag_;
  std::shared_ptr<KTREnvConfig> config_;
  std::set<std::string> ids_;
};

// A path left out of a migration. Layout: path (text, lenient), exclude_flag (optional).
class KTR_EXPORT KTRExcludePath {
 public:
  const std::string& getPath() const { return path_; }
  void setPath(const std::string& path) { path_ = path; }
  const MBQ::MBQOptionalProperty<bool>& getFlag() const { return flag_; }
  void setFlag(const MBQ::MBQOptionalProperty<bool>& flag) { flag_ = flag; }

  static const MBQ::MBQLayout<KTRExcludePath>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRExcludePath>;
  using Writer = MBQ::MBQLayoutWriter<KTRExcludePath>;

 private:
  std::string path_;
  MBQ::MBQOptionalProperty<bool> flag_;
};

// Layout: note as the text, code (32-bit); both lenient, so the reader always returns 0.
class KTR_EXPORT KTRCalculateHWNodeWarning {
 public:
  const std::string& getText() const { return text_; }
  void setText(const std::string& text) { text_ = text; }
  int getCode() const { return code_; }
  void setCode(int code) { code_ = code; }

  static const MBQ::MBQLayout<KTRCalculateHWNodeWarning>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRCalculateHWNodeWarning>;
  using Writer = MBQ::MBQLayoutWriter<KTRCalculateHWNodeWarning>;

 private:
  std::string text_;
  int code_ = 0;
};

// Schema type "hw_notesType" (relocator namespace). Layout: the MBQCalculateHWNodeNotes
// elements (req), one exclude_path per excluded path, one warning per warning. The lists are read as
// found (entries up to the first that does not read).
class KTR_EXPORT KTRCalculateHWNodeNotes : public MBQ::MBQCalculateHWNodeNotes {
 public:
  const std::vector<KTRExcludePath>& getExcludePaths() const { return excludePaths_; }
  void setExcludePaths(const std::vector<KTRExcludePath>& paths) { excludePaths_ = paths; }
  const std::vector<KTRCalculateHWNodeWarning>& getWarnings() const { return warnings_; }
  void setWarnings(const std::vector<KTRCalculateHWNodeWarning>& warnings) { warnings_ = warnings; }

  static const MBQ::MBQLayout<KTRCalculateHWNodeNotes>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRCalculateHWNodeNotes>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRCalculateHWNodeNotes> {
    const char* getStrNSID() const { return MBQ::kRelocatorNamespace; }
    const char* getStrTypeID() const { return "hw_notesType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  std::vector<KTRExcludePath> excludePaths_;
  std::vector<KTRCalculateHWNodeWarning> warnings_;
};

}  // namespace KTR
