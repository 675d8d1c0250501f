#pragma once

#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQLayout.h"

// The records of the package manager: templates and packages as the node names them, the
// versions of a package and what the node knows about one package. (The package manager
// interface itself, KTRPkgM, is in KTRManagers.h.)
//
// Element layouts are listed with each record, in reading order, by element name; writers
// emit the same elements in the same order, and layout() in the .cpp file is the authority.
// "req": a missing or malformed element makes the reader return -1 at once, fields read
// before it keeping their new values; "lenient": never fails the record: a list becomes
// exactly the items present up to the first one that does not read (none: empty), a single
// value is read when present and well-formed and otherwise keeps its value. Booleans are
// written as 0/1.

namespace KTR {

// An operating-system or application template, known by its name (for example
// "centos-7-x86_64") and a release text. Text form: the name alone, as the container file
// names templates.
//
// Layout: release (lenient: templates named in a container file have none), key as the name
// (req).
class KTR_EXPORT KTRTemplate {
 public:
  KTRTemplate() = default;
  explicit KTRTemplate(const std::string& name, const std::string& release = std::string())
      : name_(name), release_(release) {}
  virtual ~KTRTemplate() = default;

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  const std::string& getRelease() const { return release_; }
  void setRelease(const std::string& release) { release_ = release; }

  std::string toString() const { return name_; }
  // The whole text becomes the name; the release is cleared. Returns 0.
  int fromString(const std::string& text);

  bool operator==(const KTRTemplate& o) const { return name_ == o.name_ && release_ == o.release_; }
  bool operator<(const KTRTemplate& o) const { return name_ < o.name_ || (name_ == o.name_ && release_ < o.release_); }

  // release (a failure is ignored) then key as the name (its result is the reader's).
  static const MBQ::MBQLayout<KTRTemplate>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRTemplate>;
  using Writer = MBQ::MBQLayoutWriter<KTRTemplate>;

 private:
  std::string name_;
  std::string release_;
};

// A package of a template: the template's name and release plus a list of texts and a flag.
//
// Layout: package_text, one per text (lenient), package_flag (lenient), then the KTRTemplate
// elements (release lenient, key req) in the same element.
class KTR_EXPORT KTRPackage : public KTRTemplate {
 public:
  KTRPackage() = default;
  explicit KTRPackage(const std::string& name, const std::string& release = std::string())
      : KTRTemplate(name, release) {}
  KTRPackage(const KTRPackage&) = default;
  KTRPackage& operator=(const KTRPackage&) = default;
  ~KTRPackage() override;

  const std::vector<std::string>& getTextList() const { return texts_; }
  void setTextList(const std::vector<std::string>& texts) { texts_ = texts; }
  bool getFlag() const { return flag_; }
  void setFlag(bool flag) { flag_ = flag; }

  friend bool operator==(const KTRPackage& a, const KTRPackage& b) {
    return static_cast<const KTRTemplate&>(a) == static_cast<const KTRTemplate&>(b) && a.texts_ == b.texts_ &&
           a.flag_ == b.flag_;
  }

  // Returns the KTRTemplate part's result.
  static const MBQ::MBQLayout<KTRPackage>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRPackage>;
  using Writer = MBQ::MBQLayoutWriter<KTRPackage>;

 private:
  std::vector<std::string> texts_;
  bool flag_ = false;
};

// One version of a package: its version text, two flags and the templates it belongs to.
//
// Layout: version_text (req), primary_flag (req), secondary_flag (lenient), template_list
// holding one package element per template (KTRTemplate; the holder and the list lenient).
// A lenient reader (Reader(true)) reads every element leniently, for peers that send only
// the templates.
class KTR_EXPORT KTRPackageVersion {
 public:
  KTRPackageVersion() = default;
  KTRPackageVersion(const KTRPackageVersion&) = default;
  KTRPackageVersion& operator=(const KTRPackageVersion&) = default;
  virtual ~KTRPackageVersion();

  const std::string& getVersionText() const { return versionText_; }
  void setVersionText(const std::string& text) { versionText_ = text; }
  bool getPrimaryFlag() const { return primaryFlag_; }
  void setPrimaryFlag(bool flag) { primaryFlag_ = flag; }
  bool getSecondaryFlag() const { return secondaryFlag_; }
  void setSecondaryFlag(bool flag) { secondaryFlag_ = flag; }
  const std::vector<KTRTemplate>& getTemplates() const { return templates_; }
  void setTemplates(const std::vector<KTRTemplate>& templates) { templates_ = templates; }

  friend bool operator==(const KTRPackageVersion& a, const KTRPackageVersion& b) {
    return a.versionText_ == b.versionText_ && a.primaryFlag_ == b.primaryFlag_ &&
           a.secondaryFlag_ == b.secondaryFlag_ && a.templates_ == b.templates_;
  }

  static const MBQ::MBQLayout<KTRPackageVersion>& layout();
  struct Reader {
    explicit Reader(bool lenient = false) : lenient_(lenient) {}
    bool isLenient() const { return lenient_; }
    int operator()(const MBQ::MBQMessageIterator& it, KTRPackageVersion& version) const {
      return lenient_ ? layout().readLeniently(it, version) : layout().read(it, version);
    }

   private:
    bool lenient_;
  };
  using Writer = MBQ::MBQLayoutWriter<KTRPackageVersion>;

 private:
  std::string versionText_;
  bool primaryFlag_ = false;
  bool secondaryFlag_ = false;
  std::vector<KTRTemplate> templates_;
};

// What the node knows about one package: its name, two texts and its versions.
//
// Layout: key as the name (req), detail (req), type (req), then one release element per
// version (KTRPackageVersion, read strictly). The version list decides the reader's result:
// no version at all, or a version that does not read, is -1 (the versions before it are kept).
class KTR_EXPORT KTRPackageInfo {
 public:
  KTRPackageInfo() = default;

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  const std::string& getDetail() const { return detail_; }
  void setDetail(const std::string& detail) { detail_ = detail; }
  const std::string& getType() const { return type_; }
  void setType(const std::string& type) { type_ = type; }
  const std::vector<KTRPackageVersion>& getVersions() const { return versions_; }
  void setVersions(const std::vector<KTRPackageVersion>& versions) { versions_ = versions; }

  friend bool operator==(const KTRPackageInfo& a, const KTRPackageInfo& b) {
    return a.name_ == b.name_ && a.detail_ == b.detail_ && a.type_ == b.type_ && a.versions_ == b.versions_;
  }

  static const MBQ::MBQLayout<KTRPackageInfo>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRPackageInfo>;
  using Writer = MBQ::MBQLayoutWriter<KTRPackageInfo>;

 private:
  std::string name_;
  std::string detail_;
  std::string type_;
  std::vector<KTRPackageVersion> versions_;
};

}  // namespace KTR
