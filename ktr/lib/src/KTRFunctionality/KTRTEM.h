#pragma once

#include <map>
#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRPkgM.h"
#include "MBQFunctionalityCore/MBQPackage.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQNamespaces.h"

// The records of the template manager: a container's distribution, the full description of a
// template, and the templates of the node's template area with the architecture they are for.
// KTRTemplate, the name-and-release record that templates and packages share, is declared in
// KTRPkgM.h, which this header includes.
//
// Element layouts follow the conventions written at the top of KTRPkgM.h ("req", "ignored",
// "as found"; reading order, writers emit the same elements in the same order).

namespace KTR {

// The Linux distribution a container's template belongs to ("centos", "debian"...). Text form
// and message form: the name (element "name").
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

  static const MBQ::MBQLayout<KTRDistribution>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRDistribution>;
  using Writer = MBQ::MBQLayoutWriter<KTRDistribution>;

 private:
  std::string name_;
};

// Which technology names are CPU architectures the node supports. A template lists its
// technologies ("hqfs", "x86_64", ...) without saying which entry is the architecture; the
// architecture is the first entry this selector accepts.
class KTR_EXPORT KTRArchitectureSelector {
 public:
  // "ia64", "x86", "x86_64", in strcmp order, which the binary search relies on. Names match
  // exactly: "X86_64" and "i386" are not supported.
  static const char* const SUPPORTED[3];

  // Binary search of SUPPORTED.
  bool operator()(const std::string& name) const;
  // False for nullptr; otherwise a linear search of SUPPORTED.
  bool operator()(const char* name) const;

  // The first entry of `technologies`, in list order, that is a supported architecture; ""
  // when there is none. The first match wins, not the most specific one: ("x86", "x86_64")
  // gives "x86".
  static std::string getArch(const std::vector<std::string>& technologies);
};

// The full description of one template, as the template manager returns it: its version
// fields, name, settings, packages and technologies.
//
// Layout: the KTRPackageVersion elements (req, read strictly), key name (req), config_text2 second
// text (req), settings holding the settings, one item per entry with the key under name and
// the value under value (the holder and the map as found; an item needs both), one package
// element per package (KTRPackage; req: at least one, and every one must read), detail
// (ignored), config_text4 fourth text (ignored), config_text5 fifth text (ignored), one "technology" element
// per technology (as found).
//
// Packages are keyed by their own name (key): the map's key is not written separately, so a
// package filed under another key comes back under its name, and of two packages with one
// name the first read is kept.
class KTR_EXPORT KTRTemplateConfigInfo : public KTRPackageVersion {
 public:
  KTRTemplateConfigInfo() = default;
  KTRTemplateConfigInfo(const KTRTemplateConfigInfo&) = default;
  KTRTemplateConfigInfo& operator=(const KTRTemplateConfigInfo&) = default;
  ~KTRTemplateConfigInfo() override;

  const std::string& getName() const { return name_; }
  void setName(const std::string& name) { name_ = name; }
  const std::string& getConfigText2() const { return configText2_; }
  void setConfigText2(const std::string& text) { configText2_ = text; }
  const std::map<std::string, std::string>& getSettings() const { return settings_; }
  void setSettings(const std::map<std::string, std::string>& settings) { settings_ = settings; }
  const std::map<std::string, KTRPackage>& getPackages() const { return packages_; }
  void setPackages(const std::map<std::string, KTRPackage>& packages) { packages_ = packages; }
  const std::string& getDetail() const { return detail_; }
  void setDetail(const std::string& detail) { detail_ = detail; }
  const std::string& getConfigText4() const { return configText4_; }
  void setConfigText4(const std::string& text) { configText4_ = text; }
  const std::string& getConfigText5() const { return configText5_; }
  void setConfigText5(const std::string& text) { configText5_ = text; }
  const std::vector<std::string>& getTechnologies() const { return technologies_; }
  void setTechnologies(const std::vector<std::string>& technologies) { technologies_ = technologies; }

  friend bool operator==(const KTRTemplateConfigInfo& a, const KTRTemplateConfigInfo& b) {
    return static_cast<const KTRPackageVersion&>(a) == static_cast<const KTRPackageVersion&>(b) &&
           a.name_ == b.name_ && a.configText2_ == b.configText2_ && a.settings_ == b.settings_ &&
           a.packages_ == b.packages_ && a.detail_ == b.detail_ && a.configText4_ == b.configText4_ &&
           a.configText5_ == b.configText5_ && a.technologies_ == b.technologies_;
  }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRTemplateConfigInfo& info) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRTemplateConfigInfo& info) const;
  };

 private:
  std::string name_;
  std::string configText2_;
  std::map<std::string, std::string> settings_;
  std::map<std::string, KTRPackage> packages_;
  std::string detail_;
  std::string configText4_;
  std::string configText5_;
  std::vector<std::string> technologies_;
};

// A template of the node's template area: the core package record plus what the template
// manager knows of it. Also the payload of the shared template cache, whose key takes the
// architecture from here. An element of schema type "package_hqtemplateType" (types
// namespace) is read into this class through the derived-parser registry of MBQPackage.
//
// Layout: the MBQPackage elements (req), os_template OS-template flag (as found), secondary_flag second flag
// (as found), "uptodate" flag (as found), path value (text, as found), one "technology"
// element per technology (as found). The architecture is not written: reading derives it
// from the technologies (see setTechnologyList).
class KTR_EXPORT KTRPackageHQTemplate : public MBQ::MBQPackage {
 public:
  KTRPackageHQTemplate() = default;
  KTRPackageHQTemplate(const KTRPackageHQTemplate&) = default;
  KTRPackageHQTemplate& operator=(const KTRPackageHQTemplate&) = default;
  ~KTRPackageHQTemplate() override;

  // Whether this is an operating-system template (else an application template).
  bool isOsTemplate() const { return osTemplate_; }
  void setOsTemplate(bool on) { osTemplate_ = on; }
  bool getSecondaryFlag() const { return secondaryFlag_; }
  void setSecondaryFlag(bool flag) { secondaryFlag_ = flag; }
  bool isUpToDate() const { return upToDate_; }
  void setUpToDate(bool on) { upToDate_ = on; }
  const std::string& getValue() const { return value_; }
  void setValue(const std::string& value) { value_ = value; }

  const std::vector<std::string>& getTechnologyList() const { return technologies_; }
  // Stores the list; a non-empty list also sets the architecture to
  // KTRArchitectureSelector::getArch(list), which is "" when no entry is an architecture. An
  // empty list leaves the architecture as it was.
  void setTechnologyList(const std::vector<std::string>& technologies);
  const std::string& getArchitecture() const { return architecture_; }

  friend bool operator==(const KTRPackageHQTemplate& a, const KTRPackageHQTemplate& b) {
    return static_cast<const MBQ::MBQPackage&>(a) == static_cast<const MBQ::MBQPackage&>(b) &&
           a.osTemplate_ == b.osTemplate_ && a.secondaryFlag_ == b.secondaryFlag_ && a.upToDate_ == b.upToDate_ &&
           a.value_ == b.value_ && a.technologies_ == b.technologies_ && a.architecture_ == b.architecture_;
  }

  // Returns the MBQPackage part's result; the own elements never fail the read.
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRPackageHQTemplate& tmpl) const;
  };
  // Writes the MBQPackage part in place (untyped, so the element keeps this writer's type),
  // then the own elements.
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "package_hqtemplateType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRPackageHQTemplate& tmpl) const;
  };

 private:
  bool osTemplate_ = false;
  bool secondaryFlag_ = false;
  bool upToDate_ = false;
  std::string value_;
  std::vector<std::string> technologies_;
  std::string architecture_;
};

// A standard template: the KTRPackageHQTemplate elements, then primary_flag first flag (as found).
// Schema type "package_std_hqtemplateType" (types namespace), registered with MBQPackage.
class KTR_EXPORT KTRPackageHQTemplateStd : public KTRPackageHQTemplate {
 public:
  KTRPackageHQTemplateStd() = default;
  KTRPackageHQTemplateStd(const KTRPackageHQTemplateStd&) = default;
  KTRPackageHQTemplateStd& operator=(const KTRPackageHQTemplateStd&) = default;
  ~KTRPackageHQTemplateStd() override;

  bool getPrimaryFlag() const { return primaryFlag_; }
  void setPrimaryFlag(bool flag) { primaryFlag_ = flag; }

  friend bool operator==(const KTRPackageHQTemplateStd& a, const KTRPackageHQTemplateStd& b) {
    return static_cast<const KTRPackageHQTemplate&>(a) == static_cast<const KTRPackageHQTemplate&>(b) &&
           a.primaryFlag_ == b.primaryFlag_;
  }

  static const MBQ::MBQLayout<KTRPackageHQTemplateStd>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRPackageHQTemplateStd>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRPackageHQTemplateStd> {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "package_std_hqtemplateType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  bool primaryFlag_ = false;
};

}  // namespace KTR
