#pragma once

#include <string>

#include "KTRFunctionality/CtidWrapper.h"
#include "KTRFunctionality/KTRExport.h"
#include "MBQMessage/MBQMessageIterator.h"

namespace KTR {

// The kind of a container (an integer the agent defines) and the container it describes.
// Text form: the type number, followed by ":" and the container id when the id is not empty
// ("1:101"); reading takes the number before the first ":" and the id after it.
class KTR_EXPORT KTRVPSType {
 public:
  KTRVPSType() = default;
  KTRVPSType(int type, const CtidWrapper& ctid) : type_(type), ctid_(ctid) {}

  int getType() const { return type_; }
  void setType(int type) { type_ = type; }
  const CtidWrapper& getCtid() const { return ctid_; }
  void setCtid(const CtidWrapper& ctid) { ctid_ = ctid; }

  std::string toString() const;
  // Returns 0, or -1 (record unchanged) when the text does not start with a number.
  int fromString(const std::string& text);

  bool operator==(const KTRVPSType& o) const { return type_ == o.type_ && ctid_ == o.ctid_; }

  // Writes "ctid" then type; reads type (required) and "ctid" (its absence leaves an
  // empty id).
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRVPSType& type) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRVPSType& type) const;
  };

 private:
  int type_ = 0;
  CtidWrapper ctid_;
};

// One named capability of a container, on or off.
class KTR_EXPORT KTREnvCapability {
 public:
  KTREnvCapability() = default;
  KTREnvCapability(const std::string& name, bool value) : name_(name), value_(value) {}

  const std::string& getName() const { return name_; }
  bool getValue() const { return value_; }

  bool operator==(const KTREnvCapability& o) const { return name_ == o.name_ && value_ == o.value_; }
  bool operator<(const KTREnvCapability& o) const { return name_ < o.name_ || (name_ == o.name_ && value_ < o.value_); }

  // name then value, both required.
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTREnvCapability& capability) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTREnvCapability& capability) const;
  };

 private:
  std::string name_;
  bool value_ = false;
};

}  // namespace KTR
