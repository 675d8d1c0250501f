#pragma once

#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace KTR {

// An operating-system or application template, known by its name (for example
// "centos-7-x86_64") and a release text. Text form: the name alone, as the container file
// names templates.
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

// The Linux distribution a container's template belongs to ("centos", "debian"...). Text form
// and message form: the name (tag 1010).
class KTR_EXPORT KTRDistribution {
 public:
  KTRDistribution() = default;
  explicit KTRDistribution(const std::string& name) : name_(name) {}

  const std::string& getName() const { return name_; }
  std::string toString() const { return name_; }
  int fromString(const std::string& text) {
    name_ = text;
    return 0;
  }

  bool operator==(const KTRDistribution& o) const { return name_ == o.name_; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRDistribution& record) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRDistribution& record) const;
  };

 private:
  std::string name_;
};

}  // namespace KTR
