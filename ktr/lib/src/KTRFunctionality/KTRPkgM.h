#pragma once

#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQMessageIterator.h"

// The records of the package manager: templates and packages as the node names them, the
// versions of a package and what the node knows about one package. (The package manager
// interface itself, KTRPkgM, is in KTRManagers.h.)
//
// Element layouts are listed with each record, in reading order; writers emit the same
// elements in the same order. Numbers are ids of the tag table, quoted names element names.
// "req": a missing or malformed element makes the reader return -1 at once, fields read
// before it keeping their new values; "ignored": read, result not looked at, so a missing or
// malformed element leaves the field as it was; "as found": never fails the record: a list
// becomes exactly the items present up to the first one that does not read (none: empty), a
// single value is read when present and otherwise keeps its value. Booleans are written as
// 0/1.

namespace KTR {

// An operating-system or application template, known by its name (for example
// "centos-7-x86_64") and a release text. Text form: the name alone, as the container file
// names templates.
//
// Layout: 1223 release (ignored: templates named in a container file have none), 1026 name
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

  // Tag 1223 (release; a failure is ignored) then tag 1026 (name; its result is the reader's).
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRTemplate& record) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRTemplate& record) const;
  };

 private:
  std::string name_;
  std::string release_;
};

// A package of a template: the template's name and release plus a list of texts and a flag.
//
// Layout: 1511 one element per text (as found), 1118 flag (as found), then the KTRTemplate
// elements (1223 ignored, 1026 req) in the same element.
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
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRPackage& package) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRPackage& package) const;
  };

 private:
  std::vector<std::string> texts_;
  bool flag_ = false;
};

// One version of a package: its version text, two flags and the templates it belongs to.
//
// Layout: 1497 version text (req), 1498 first flag (req), 1499 second flag (ignored), 1509
// holding one 1295 element per template (KTRTemplate; the holder and the list as found).
// A lenient reader (Reader(true)) ignores failures of 1497 and 1498 too, for peers that send
// only the templates.
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

  struct KTR_EXPORT Reader {
    explicit Reader(bool lenient = false) : lenient_(lenient) {}
    bool isLenient() const { return lenient_; }
    int operator()(const MBQ::MBQMessageIterator& it, KTRPackageVersion& version) const;

   private:
    bool lenient_;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRPackageVersion& version) const;
  };

 private:
  std::string versionText_;
  bool primaryFlag_ = false;
  bool secondaryFlag_ = false;
  std::vector<KTRTemplate> templates_;
};

// What the node knows about one package: its name, two texts and its versions.
//
// Layout: 1026 name (req), 1496 detail (req), 1007 type (req), then one 1223 element per
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

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRPackageInfo& info) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRPackageInfo& info) const;
  };

 private:
  std::string name_;
  std::string detail_;
  std::string type_;
  std::vector<KTRPackageVersion> versions_;
};

}  // namespace KTR
