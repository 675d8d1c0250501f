#pragma once

#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQOperatorRecords.h"
#include "MBQMessage/MBQLayout.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The records of the container (environment) manager service: upgrade and log options, the
// native configuration text, user and group disk quotas, scripts. (The manager interface,
// KTREnvM, is in KTRManagers.h.)
//
// Layouts in reading order; writers emit the same elements. "req": a missing or malformed
// element fails the reader at once (-1, or that element's own result where said); "lenient":
// a failure leaves the field as it was (layout() in the .cpp file is the authority).

namespace KTR {

// One flags word of which only bit 0 travels: it is set exactly when element upgrade_flag exists
// (reading clears the word first); writing adds an empty upgrade_flag only when bit 0 is set.
class KTR_EXPORT KTRUpgradeOptions {
 public:
  enum { FlagUpgrade = 1 };

  unsigned getFlags() const { return flags_; }
  void setFlags(unsigned flags) { flags_ = flags; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUpgradeOptions& options) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUpgradeOptions& options) const;
  };

 private:
  unsigned flags_ = 0;
};

// Schema type "log_optionsType" (types namespace), registered with MBQLogOptions. Layout: type
// as the value (32-bit, lenient), then the MBQLogOptions elements, whose result is the reader's.
class KTR_EXPORT KTRLogOptions : public MBQ::MBQLogOptions {
 public:
  int getValue() const { return value_; }
  void setValue(int value) { value_ = value; }

  static const MBQ::MBQLayout<KTRLogOptions>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRLogOptions>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRLogOptions> {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "log_optionsType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  int value_ = 0;
};

// Schema type "quellix_configType" (types namespace), registered with MBQNativeConfig.
// Layout: content, the configuration text (req; its result is the reader's).
class KTR_EXPORT KTRNativeConfig : public MBQ::MBQNativeConfig {
 public:
  const std::string& getText() const { return text_; }
  void setText(const std::string& text) { text_ = text; }

  static const MBQ::MBQLayout<KTRNativeConfig>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRNativeConfig>;
  struct KTR_EXPORT Writer : MBQ::MBQLayoutWriter<KTRNativeConfig> {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "quellix_configType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };

 private:
  std::string text_;
};

// The quota limits of one user or group.
class KTR_EXPORT KTRUGIDQuotaLimit {
 public:
  // Layout: usage (64-bit, lenient), soft_limit (64-bit, req), hard_limit (64-bit; its result is the
  // reader's).
  class KTR_EXPORT QuotaLimit {
   public:
    long long getUsage() const { return usage_; }
    void setUsage(long long v) { usage_ = v; }
    long long getSoftLimit() const { return softLimit_; }
    void setSoftLimit(long long v) { softLimit_ = v; }
    long long getHardLimit() const { return hardLimit_; }
    void setHardLimit(long long v) { hardLimit_ = v; }

    static const MBQ::MBQLayout<QuotaLimit>& layout();
    using Reader = MBQ::MBQLayoutReader<QuotaLimit>;
    using Writer = MBQ::MBQLayoutWriter<QuotaLimit>;

   private:
    long long usage_ = 0;
    long long softLimit_ = 0;
    long long hardLimit_ = 0;
  };

  // Layout: name as the id (32-bit, req), quota_limit2 (req), quota_limit1 (its result is
  // the reader's). The first limit is the one under quota_limit1 although it is read last.
  int getId() const { return id_; }
  void setId(int id) { id_ = id; }
  const QuotaLimit& getLimit1() const { return limit1_; }
  void setLimit1(const QuotaLimit& limit) { limit1_ = limit; }
  const QuotaLimit& getLimit2() const { return limit2_; }
  void setLimit2(const QuotaLimit& limit) { limit2_ = limit; }

  static const MBQ::MBQLayout<KTRUGIDQuotaLimit>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUGIDQuotaLimit>;
  using Writer = MBQ::MBQLayoutWriter<KTRUGIDQuotaLimit>;

 private:
  int id_ = 0;
  QuotaLimit limit1_;
  QuotaLimit limit2_;
};

// Layout: quota_setting as the first period, grace_period as the second (32-bit, both req).
class KTR_EXPORT KTRUGIDQuotaGracePeriod {
 public:
  int getPeriod1() const { return period1_; }
  void setPeriod1(int v) { period1_ = v; }
  int getPeriod2() const { return period2_; }
  void setPeriod2(int v) { period2_ = v; }

  static const MBQ::MBQLayout<KTRUGIDQuotaGracePeriod>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRUGIDQuotaGracePeriod>;
  using Writer = MBQ::MBQLayoutWriter<KTRUGIDQuotaGracePeriod>;

 private:
  int period1_ = 0;
  int period2_ = 0;
};

// Layout: type as the value (32-bit, req), ugid_limits holding one ugid_limit per limit (specified unless the
// holder is missing or an entry does not read), grace_periods (specified unless it is
// missing or does not read). Returns 0 whenever the value was read.
class KTR_EXPORT KTRUGIDQuotaInfo {
 public:
  int getValue() const { return value_; }
  void setValue(int value) { value_ = value; }
  const MBQ::MBQOptionalProperty<std::vector<KTRUGIDQuotaLimit>>& getLimits() const { return limits_; }
  void setLimits(const MBQ::MBQOptionalProperty<std::vector<KTRUGIDQuotaLimit>>& limits) { limits_ = limits; }
  const MBQ::MBQOptionalProperty<KTRUGIDQuotaGracePeriod>& getGracePeriod() const { return gracePeriod_; }
  void setGracePeriod(const MBQ::MBQOptionalProperty<KTRUGIDQuotaGracePeriod>& p) { gracePeriod_ = p; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUGIDQuotaInfo& info) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUGIDQuotaInfo& info) const;
  };

 private:
  int value_ = 0;
  MBQ::MBQOptionalProperty<std::vector<KTRUGIDQuotaLimit>> limits_;
  MBQ::MBQOptionalProperty<KTRUGIDQuotaGracePeriod> gracePeriod_;
};

// Layout: key as the name (req), type (req), detail (lenient), content as the body
// (lenient).
class KTR_EXPORT KTRScript {
 public:
  const std::string& getName() const { return name_; }
  void setName(const std::string& v) { name_ = v; }
  const std::string& getType() const { return type_; }
  void setType(const std::string& v) { type_ = v; }
  const std::string& getDetail() const { return detail_; }
  void setDetail(const std::string& v) { detail_ = v; }
  const std::string& getContent() const { return content_; }
  void setContent(const std::string& v) { content_ = v; }

  static const MBQ::MBQLayout<KTRScript>& layout();
  using Reader = MBQ::MBQLayoutReader<KTRScript>;
  using Writer = MBQ::MBQLayoutWriter<KTRScript>;

 private:
  std::string name_;
  std::string type_;
  std::string detail_;
  std::string content_;
};

}  // namespace KTR
