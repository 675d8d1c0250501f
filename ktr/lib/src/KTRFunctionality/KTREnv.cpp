#include "KTRFunctionality/KTREnv.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cerrno>
#include <cstring>
#include <initializer_list>
#include <vector>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include "KTRFunctionality/KTREnvConfigInternal.h"
#include "KTRFunctionality/KTRVtSettings.h"
#include "MBQCore/MBQError.h"
#include "MBQCore/MBQIPAddress.h"
#include "MBQCore/MBQLock.h"
#include "MBQCore/MBQLogger.h"
#include "MBQFunctionalityCore/MBQEnvConfig.h"
#include "MBQFunctionalityCore/MBQEnvFactory.h"
#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {

namespace {

constexpr const char* kModule = "KTRFunctionality";

using OptionalText = MBQ::MBQOptionalProperty<std::string>;
using TextGetter = int (MBQ::MBQEnvConfig::*)(OptionalText&) const;

// A shared pointer that views an object owned elsewhere (null stays null).
template <class T>
std::shared_ptr<T> viewOf(const std::shared_ptr<const T>& object) {
  if (!object) return nullptr;
  return std::shared_ptr<T>(const_cast<T*>(object.get()), MBQ::deleter_fake());
}

// The first configuration, in the order given, where the property is specified.
bool firstSpecifiedText(TextGetter getter, const MBQ::MBQEnvConfig* first, const MBQ::MBQEnvConfig* second,
                        std::string& text) {
  for (const MBQ::MBQEnvConfig* config : {first, second}) {
    if (config == nullptr) continue;
    OptionalText value;
    if ((config->*getter)(value) == 0 && value.isSpecified()) {
      text = value.get();
      return true;
    }
  }
  return false;
}

bool firstAddress(const MBQ::MBQEnvConfig* first, const MBQ::MBQEnvConfig* second, std::string& text) {
  for (const MBQ::MBQEnvConfig* config : {first, second}) {
    if (config == nullptr) continue;
    MBQ::MBQOptionalProperty<std::vector<MBQ::MBQIPAddress>> addresses;
    if (config->getAddresses(addresses) == 0 && addresses.isSpecified() && !addresses.get().empty()) {
      text = addresses.get().front().toString();
      return true;
    }
  }
  return false;
}

// The container id of a virtual configuration. Records read from a message whose technology
// was unknown at the time hold a plain MBQVEnvConfig; a KTREnvConfig view over the same subtree
// still finds the id there.
int readCtid(const MBQ::MBQVEnvConfig* config, CtidWrapper& ctid) {
  if (config == nullptr) return -1;
  if (const auto* ktrConfig = dynamic_cast<const KTREnvConfig*>(config)) return ktrConfig->getVeid(ctid);
  if (!config->hasMsg()) return -1;
  return KTREnvConfig(config->msg(), MBQ::EnvConfigVirtual).getVeid(ctid);
}

bool matchVeid(const MBQ::MBQEnv* env, const CtidWrapper& expected) {
  if (env == nullptr) return false;
  CtidWrapper ctid(std::string("0"));
  return readCtid(env->getVirtualConfig().get(), ctid) == 0 && ctid == expected;
}

// Registers the container factory of this technology for as long as the library is loaded.
class EnvFactoryRegistration {
 public:
  EnvFactoryRegistration() {
    MBQ::MBQEnvFactory::getInstance().registerEnv(
        KTREnv::typeName, std::make_shared<MBQ::MBQEnvChildFactoryT<KTREnv, KTREnvConfig>>());
  }
  ~EnvFactoryRegistration() { MBQ::MBQEnvFactory::getInstance().unregisterEnv(KTREnv::typeName); }
  EnvFactoryRegistration(const EnvFactoryRegistration&) = delete;
  EnvFactoryRegistration& operator=(const EnvFactoryRegistration&) = delete;
};

}  // namespace

// ---------------------------------------------------------------- KTREnv

KTREnv::KTREnv() = default;

KTREnv::KTREnv(const MBQ::MBQEID& eid, const std::shared_ptr<KTREnvConfig>& config)
    : MBQ::MBQEnv(eid, std::static_pointer_cast<MBQ::MBQVEnvConfig>(config)) {}

KTREnv::KTREnv(const MBQ::MBQEnv& env) : MBQ::MBQEnv(env.getEID(), viewOf(env.getVirtualConfig())) {
  setConfig(viewOf(env.getConfig()));
  setParentEID(env.getParentEID());
  setStatus(env.getStatus());
  for (int reason = 0; reason < kAlertReasons; ++reason) setAlertType(reason, env.getAlertType(reason));
}

KTREnv::~KTREnv() = default;

std::string KTREnv::getTitle() const {
  const auto virtualConfig = getVirtualConfig();
  const auto config = getConfig();
  std::string title;
  if (firstSpecifiedText(&MBQ::MBQEnvConfig::getName, virtualConfig.get(), config.get(), title)) return title;
  if (firstSpecifiedText(&MBQ::MBQEnvConfig::getHostname, virtualConfig.get(), config.get(), title)) return title;
  CtidWrapper ctid(std::string("0"));
  if (readCtid(virtualConfig.get(), ctid) == 0) return std::string("#") + ctid.toString();
  if (firstAddress(virtualConfig.get(), config.get(), title)) return title;
  return getEID().toString();
}

std::size_t KTREnv::getSortKey() const {
  CtidWrapper ctid(0u);
  if (readCtid(getVirtualConfig().get(), ctid) != 0) {
    MBQ::Logger::put(MBQ::kError, kModule, "[%s] Failed to get veid", "getSortKey");
    ctid = CtidWrapper(0u);
  }
  return static_cast<std::size_t>(ctid.getSortKey());
}

// ---------------------------------------------------------------- container predicates

bool MatchVeid::operator()(const std::shared_ptr<const MBQ::MBQEnv>& env) const { return matchVeid(env.get(), ctid_); }

MatchVeidParent::MatchVeidParent(const MBQ::MBQEID& parent, const CtidWrapper& ctid) : parent_(parent), ctid_(ctid) {}

bool MatchVeidParent::operator()(const std::shared_ptr<const MBQ::MBQEnv>& env) const {
  if (!env || env->getParentEID() != parent_) return false;
  return matchVeid(env.get(), ctid_);
}

// ---------------------------------------------------------------- KTRPathModTime

bool KTRPathModTime::isModified(const char* path) {
  namespace pt = boost::posix_time;
  struct stat info;
  if (::stat(path, &info) != 0) return true;
  pt::ptime fileTime = pt::from_time_t(info.st_mtim.tv_sec) + pt::microseconds(info.st_mtim.tv_nsec / 1000);
  if (fileTime == modTime_) return false;
  // A file system that keeps whole seconds cannot show a second change made within the same
  // second; remembering a second less makes the next look report the file as changed again.
  if (fileTime.time_of_day().fractional_seconds() == 0 &&
      fileTime == pt::second_clock::universal_time())
    fileTime -= pt::seconds(1);
  modTime_ = fileTime;
  return true;
}

int KTRPathModTime::modify(const char* path) {
  const int fd = ::open(path, O_WRONLY);
  if (fd < 0) {
    MBQ::setErrorMessage("can't open %s: %s", path, std::strerror(errno));
    return -1;
  }
  ::close(fd);
  if (::utime(path, nullptr) != 0) {
    MBQ::setErrorMessage("can't set the times of %s: %s", path, std::strerror(errno));
    return -1;
  }
  return 0;
}

// ---------------------------------------------------------------- load-time objects
//
// Constructed in this order when the library loads and destroyed in reverse order when it
// unloads; the order is part of the library's contract with the framework: the container
// factory goes last so that every record it can create is already readable and writable, and
// it is the first to go at unload.

namespace {
const std::string kEmptyText;
}  // namespace
const std::string KTREnv::typeName("quellix");

namespace {
// The first container id and "no container" exist from here on. This file's functions build
// their own start values instead of using them: another library's static initialiser may sort
// or title containers before this sequence has run.
const CtidWrapper kFirstCtid(1u);
const CtidWrapper kNoCtid(0u);

MBQ::MBQDerivedParserFactoryT<KTRVtInfo, MBQ::MBQVtInfo> vtInfoFactory(false);
MBQ::MBQDerivedParserFactoryT<KTRVtSettings, MBQ::MBQVtSettings> vtSettingsFactory(false);
MBQ::MBQDerivedParserFactoryT<KTREnvConfig, MBQ::MBQEnvConfig, std::string, MBQ::MBQEnvConfig::Reader,
                              KTREnvConfig::Writer>
    envConfigFactory(false);
}  // namespace

MBQ::MBQLock ktrPositionTableLock;

MBQ::limited_length_string<16> KTREnv::type = "quellix";

namespace {
MBQ::MBQDerivedParserFactoryT<KTREnv, MBQ::MBQEnv, std::string, MBQ::MBQEnv::Reader, KTREnv::Writer> envFactory(false);

EnvFactoryRegistration envFactoryRegistration;
}  // namespace

}  // namespace KTR
