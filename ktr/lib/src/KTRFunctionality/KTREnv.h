#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <boost/date_time/posix_time/ptime.hpp>

#include "KTRFunctionality/KTREnvConfig.h"
#include "KTRFunctionality/KTRExport.h"
#include "MBQCore/MBQEID.h"
#include "MBQCore/limited_length_string.h"
#include "MBQFunctionalityCore/MBQEnv.h"
#include "MBQMessage/MBQNamespaces.h"

namespace KTR {

// A "quellix" container as the agent lists, sorts and shows it. Its virtual configuration is a
// KTREnvConfig; the record adds no data of its own to MBQ::MBQEnv, only the title and the sort
// key derived from the configuration.
class KTR_EXPORT KTREnv : public MBQ::MBQEnv {
 public:
  // The technology key under which the library registers its container factory.
  static MBQ::limited_length_string<16> type;
  // The same key as a std::string, for the framework calls that take one.
  static const std::string typeName;

  KTREnv();
  KTREnv(const MBQ::MBQEID& eid, const std::shared_ptr<KTREnvConfig>& config);
  // A view of another container record: the same EID, parent, status and alert types, and the
  // source's two configurations shared without ownership. The source must outlive this record,
  // and changes made through either configuration are seen by both.
  explicit KTREnv(const MBQ::MBQEnv& env);
  ~KTREnv() override;

  // The first of: the configured name (virtual configuration first, then the plain one); the
  // hostname (same order); "#" and the container id; the first configured address (same
  // order), looked at only when the id cannot be read; the EID text.
  std::string getTitle() const override;
  // The container id's sort key (see CtidWrapper::getSortKey). A record whose id cannot be
  // read logs an error and sorts as id 0.
  std::size_t getSortKey() const override;

  // MBQEnv's layout, typed "envType" in the types namespace; the reader is MBQEnv's.
  struct KTR_EXPORT Writer : MBQ::MBQEnv::Writer {
    const char* getStrNSID() const { return MBQ::kTypesNamespace; }
    const char* getStrTypeID() const { return "envType"; }
    int getNSID() const { return 0; }
    int getTypeID() const { return 0; }
  };
  using Reader = MBQ::MBQEnv::Reader;
};

// Remembers the modification time of one file (UTC, microsecond resolution), to tell whether
// the file changed since it was last looked at.
class KTR_EXPORT KTRPathModTime {
 public:
  // True when the file's modification time differs from the remembered one, which then
  // becomes the remembered time; also true, with nothing remembered, when the file cannot be
  // stat'ed. A whole-second time that is the current second is remembered one second early,
  // so that another change within the same second is still seen on the next call.
  bool isModified(const char* path);
  // Sets the file's access and modification times to now. The file must exist and be
  // writable. Returns 0, or -1 with the error text set.
  static int modify(const char* path);

  // The remembered time; not_a_date_time until the first successful isModified().
  const boost::posix_time::ptime& getModTime() const { return modTime_; }

 private:
  boost::posix_time::ptime modTime_;
};

}  // namespace KTR
