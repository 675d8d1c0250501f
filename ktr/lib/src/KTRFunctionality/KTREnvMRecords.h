#pragma once

#include <string>
#include <vector>

#include "KTRFunctionality/KTRExport.h"
#include "MBQFunctionalityCore/MBQOperatorRecords.h"
#include "MBQMessage/MBQMessageIterator.h"
#include "MBQMessage/MBQNamespaces.h"
#include "MBQMessage/MBQOptionalProperty.h"

// The records of the container (environment) manager service: upgrade and log options, the
// native configuration text, user and group disk quotas, scripts. (The manager interface,
// KTREnvM, is in KTRManagers.h.)
//
// Layouts in reading order; writers emit the same elements. "req": a missing or malformed
// element fails the reader at once (-1, or that element's own result where said); "ignored":
// a failure leaves the field as it was.

namespace KTR {

// One flags word of which only bit 0 travels: it is set exactly when element 1152 exists
// (reading clears the word first); writing adds an empty 1152 only when bit 0 is set.
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

// Schema type "log_optionsType" (types namespace), registered with MBQLogOptions. Layout: 1007
// value (32-bit, ignored), then the MBQLogOptions elements, whose result is the reader's.
class KTR_EXPORT KTRLogOptions : public MBQ::MBQLogOptions {
 public:
  int getValue() const { return value_; }
  void setValue(int value) { value_ = value; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRLogOptions& options) const;
  };
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "log_optionsType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRLogOptions& options) const;
  };

 private:
  int value_ = 0;
};

// Schema type "quellix_configType" (types namespace), registered with MBQNativeConfig.
// Layout: 1328 the configuration text (req; its result is the reader's).
class KTR_EXPORT KTRNativeConfig : public MBQ::MBQNativeConfig {
 public:
  const std::string& getText() const { return text_; }
  void setText(const std::string& text) { text_ = text; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRNativeConfig& config) const;
  };
  struct KTR_EXPORT Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "quellix_configType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
    int operator()(MBQ::MBQMessageIterator& it, const KTRNativeConfig& config) const;
  };

 private:
  std::string text_;
};

// The quota limits of one user or group.
class KTR_EXPORT KTRUGIDQuotaLimit {
 public:
  // Layout: 1065 (64-bit, ignored), 1066 (64-bit, req), 1067 (64-bit; its result is the
  // reader's).
  class KTR_EXPORT QuotaLimit {
   public:
    long long getUsage() const { return usage_; }
    void setUsage(long long v) { usage_ = v; }
    long long getSoftLimit() const { return softLimit_; }
    void setSoftLimit(long long v) { softLimit_ = v; }
    long long getHardLimit() const { return hardLimit_; }
    void setHardLimit(long long v) { hardLimit_ = v; }

    struct KTR_EXPORT Reader {
      int operator()(const MBQ::MBQMessageIterator& it, QuotaLimit& limit) const;
    };
    struct KTR_EXPORT Writer {
      int operator()(MBQ::MBQMessageIterator& it, const QuotaLimit& limit) const;
    };

   private:
    long long usage_ = 0;
    long long softLimit_ = 0;
    long long hardLimit_ = 0;
  };

  // Layout: 1010 id (32-bit, req), 1231 second limit (req), 1232 first limit (its result is
  // the reader's). The first limit is the one under 1232 although it is read last.
  int getId() const { return id_; }
  void setId(int id) { id_ = id; }
  const QuotaLimit& getLimit1() const { return limit1_; }
  void setLimit1(const QuotaLimit& limit) { limit1_ = limit; }
  const QuotaLimit& getLimit2() const { return limit2_; }
  void setLimit2(const QuotaLimit& limit) { limit2_ = limit; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUGIDQuotaLimit& limit) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUGIDQuotaLimit& limit) const;
  };

 private:
  int id_ = 0;
  QuotaLimit limit1_;
  QuotaLimit limit2_;
};

// Layout: 1301 first period, 1582 second period (32-bit, both req).
class KTR_EXPORT KTRUGIDQuotaGracePeriod {
 public:
  int getPeriod1() const { return period1_; }
  void setPeriod1(int v) { period1_ = v; }
  int getPeriod2() const { return period2_; }
  void setPeriod2(int v) { period2_ = v; }

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRUGIDQuotaGracePeriod& period) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRUGIDQuotaGracePeriod& period) const;
  };

 private:
  int period1_ = 0;
  int period2_ = 0;
};

// Layout: 1007 value (32-bit, req), 1538 holding one 1377 per limit (specified unless the
// holder is missing or an entry does not read), 1573 grace period (specified unless it is
// missing or does not read). Returns 0 whenever 1007 was read.
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

// Layout: 1026 name (req), 1007 second text (req), 1496 third text (ignored), 1328 body
// (ignored).
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

  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRScript& script) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRScript& script) const;
  };

 private:
  std::string name_;
  std::string type_;
  std::string detail_;
  std::string content_;
};

}  // namespace KTR
