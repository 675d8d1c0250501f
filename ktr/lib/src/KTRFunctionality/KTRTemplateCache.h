#pragma once

// The cache of template descriptions shared by the agent's processes: the file "template.cache"
// in the uploads folder (MBQ::MBQInstanceFolders::uploads()), laid out as docs/template-cache.md
// describes, with the value wrapper of docs/DESIGN.md ("Template cache").

#include <boost/intrusive_ptr.hpp>
#include <cstddef>
#include <string>

#include "KTRFunctionality/KTRExport.h"
#include "KTRFunctionality/KTRTEM.h"
#include "MBQCore/MBQCacheLogic.h"
#include "MBQCore/limited_length_string.h"
#include "MBQFunctionalityCore/MBQOperatorRecords.h"

namespace KTR {

// One cached template: the template record and the ids of the containers that use it.
//
// Message layout, in the record's own element: reading takes the id set from "eid_set",
// then the template from "package"; writing puts the key (getStringID) as the string
// "name" first, then eid_set, then package (typed package_hqtemplateType).
class KTR_EXPORT KTRTemplateObject : public KTRPackageHQTemplate {
 public:
  KTRTemplateObject() = default;
  explicit KTRTemplateObject(const KTRPackageHQTemplate& tmpl) : KTRPackageHQTemplate(tmpl) {}

  MBQ::MBQEIDList& getEIDs() { return eids_; }
  const MBQ::MBQEIDList& getEIDs() const { return eids_; }

  // The cache key: name "." architecture "." version "." [OS name, unless an OS template] "."
  // OS version ["." first container id as GUID text, when there is one]. An OS template's key
  // therefore holds two dots in a row, on purpose. An id that is not a GUID text is used as is.
  std::string getStringID() const;

  // The bytes stored in the cache: the record written by Writer, as XML text. 0 or -1.
  int toBytes(std::string& bytes) const;
  // Reads bytes made by toBytes; -1 (record unchanged) when they do not parse or read.
  int fromBytes(const char* data, std::size_t size);

  friend bool operator==(const KTRTemplateObject& a, const KTRTemplateObject& b) {
    return static_cast<const KTRPackageHQTemplate&>(a) == static_cast<const KTRPackageHQTemplate&>(b) &&
           a.eids_.getIds() == b.eids_.getIds();
  }

  // -1 when the package element is missing or its template does not read; the id set is optional.
  struct KTR_EXPORT Reader {
    int operator()(const MBQ::MBQMessageIterator& it, KTRTemplateObject& object) const;
  };
  struct KTR_EXPORT Writer {
    int operator()(MBQ::MBQMessageIterator& it, const KTRTemplateObject& object) const;
  };

 private:
  MBQ::MBQEIDList eids_;
};

using KTRTemplateCacheKey = MBQ::limited_length_string<256>;
using KTRTemplateCacheLogic =
    MBQ::MBQCacheLogic<KTRTemplateCacheKey, MBQ::MBQObjectItem<KTRTemplateObject>, MBQ::MBQMappedMemoryManager>;

// The process-wide handle to the template cache. Use one handle per thread at a time (the
// file lock serialises processes and handles, not threads sharing one handle).
class KTR_EXPORT KTRTemplateCachePrototype : public KTRTemplateCacheLogic, public virtual MBQ::MBQRefCounter {
 public:
  // The cache file's leaf name in the uploads folder.
  static constexpr const char* kFileName = "template.cache";

  // The cache logic on `path` with growth step 16 MiB, 16 spare records per copied snapshot and
  // at most 1 GiB of file. Unmapped until initialize().
  explicit KTRTemplateCachePrototype(const std::string& path);
  ~KTRTemplateCachePrototype() override;

  // The process's cache on <uploads>/template.cache, created and initialised on first use;
  // a file that fails its checks is removed and made anew. Null when even that fails (the error
  // text says why); the next call tries again.
  static boost::intrusive_ptr<KTRTemplateCachePrototype> createInstance();
  // What createInstance does for one path, without the singleton: initialise, and on failure
  // remove the file and initialise once more. Null on failure; `code` (optional) gets the last
  // initialisation code (0 on success, also when the recovery succeeded).
  static boost::intrusive_ptr<KTRTemplateCachePrototype> open(const std::string& path, int* code = nullptr);

  // The raw entry operations of the cache logic (key and value bytes) stay available.
  using KTRTemplateCacheLogic::insert;
  using KTRTemplateCacheLogic::lookup;
  using KTRTemplateCacheLogic::remove;

  // Stores `object` under its getStringID(), replacing an earlier entry. 0; -1 for a key of more
  // than 255 characters, a record that does not serialise, or a full cache; or a lock code.
  int insert(const KTRTemplateObject& object);
  // 0 with the entry in `object`; 1 when there is none (also for a key too long to be stored);
  // -1 for a damaged entry; or a lock code.
  int lookup(const std::string& key, KTRTemplateObject& object);
  // 0; 1 when there is no such entry; or a failure code as for insert.
  int remove(const std::string& key);
};

using KTRTemplateCachePrototypeSP = boost::intrusive_ptr<KTRTemplateCachePrototype>;

}  // namespace KTR
