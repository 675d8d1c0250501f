#include "KTRFunctionality/KTRMigrator.h"

#include "MBQMessage/MBQDerivedParsers.h"

namespace KTR {

namespace {

using MBQ::MBQMessageIterator;

constexpr int kCloneFlagTag = 1857;
constexpr int kEnvConfigTag = 1185;
constexpr int kVeidTag = 1002;
constexpr int kPathTag = 1156;
constexpr int kExcludeFlagTag = 1818;
constexpr int kNoteTag = 1224;
constexpr int kCodeTag = 1405;
constexpr int kExcludePathTag = 1346;
constexpr int kWarningTag = 1480;

MBQ::MBQDerivedParserFactoryT<KTRMigratorCloneOptions, MBQ::MBQMigratorCloneOptions> cloneOptionsFactory(false);
MBQ::MBQDerivedParserFactoryT<KTRCalculateHWNodeNotes, MBQ::MBQCalculateHWNodeNotes> hwNodeNotesFactory(false);

}  // namespace

int KTRMigratorCloneOptions::Reader::operator()(const MBQMessageIterator& it, KTRMigratorCloneOptions& o) const {
  if (MBQ::MBQMigratorCloneOptions::Reader()(it, o) != 0) return -1;
  o.flag_ = it.hasChild(kCloneFlagTag);
  // Callers use the configuration without checking it: a request may leave it out.
  if (!o.config_) o.config_ = std::make_shared<KTREnvConfig>();
  MBQ::MBQReaderID(KTREnvConfig::Reader(), kEnvConfigTag)(it, *o.config_);
  MBQ::MBQReaderData(o.ids_, kVeidTag, MBQ::MBQReaderOptional)(it, o.ids_);
  return 0;
}

int KTRMigratorCloneOptions::Writer::operator()(MBQMessageIterator& it, const KTRMigratorCloneOptions& o) const {
  if (MBQ::MBQMigratorCloneOptions::Writer()(it, o) != 0) return -1;
  if (o.flag_.isSpecified() && o.flag_.get() && it.addChild(kCloneFlagTag) != 0) return -1;
  if (o.config_ && MBQ::MBQWriterID(KTREnvConfig::Writer(), kEnvConfigTag)(it, *o.config_) != 0) return -1;
  return MBQ::MBQWriterData(o.ids_, kVeidTag)(it, o.ids_);
}

int KTRExcludePath::Reader::operator()(const MBQMessageIterator& it, KTRExcludePath& p) const {
  it.getValue(kPathTag, p.path_);
  it.getObj(p.flag_, kExcludeFlagTag);
  return 0;
}

int KTRExcludePath::Writer::operator()(MBQMessageIterator& it, const KTRExcludePath& p) const {
  if (it.setValue(kPathTag, p.path_) != 0) return -1;
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<bool>>(), kExcludeFlagTag)(it, p.flag_);
}

int KTRCalculateHWNodeWarning::Reader::operator()(const MBQMessageIterator& it, KTRCalculateHWNodeWarning& w) const {
  it.getValue(kNoteTag, w.text_);
  it.getValue(kCodeTag, w.code_);
  return 0;
}

int KTRCalculateHWNodeWarning::Writer::operator()(MBQMessageIterator& it, const KTRCalculateHWNodeWarning& w) const {
  if (it.setValue(kNoteTag, w.text_) != 0) return -1;
  return it.setValue(kCodeTag, w.code_);
}

int KTRCalculateHWNodeNotes::Reader::operator()(const MBQMessageIterator& it, KTRCalculateHWNodeNotes& n) const {
  if (MBQ::MBQCalculateHWNodeNotes::Reader()(it, n) != 0) return -1;
  n.excludePaths_.clear();
  MBQ::MBQReaderList(KTRExcludePath::Reader(), kExcludePathTag, MBQ::MBQReaderOptional)(it, n.excludePaths_);
  n.warnings_.clear();
  MBQ::MBQReaderList(KTRCalculateHWNodeWarning::Reader(), kWarningTag, MBQ::MBQReaderOptional)(it, n.warnings_);
  return 0;
}

int KTRCalculateHWNodeNotes::Writer::operator()(MBQMessageIterator& it, const KTRCalculateHWNodeNotes& n) const {
  // The core part goes into this element untyped, so the element keeps "hw_notesType".
  if (MBQ::MBQCalculateHWNodeNotes::Writer()(it, n) != 0) return -1;
  if (MBQ::MBQWriterList(KTRExcludePath::Writer(), kExcludePathTag)(it, n.excludePaths_) != 0) return -1;
  return MBQ::MBQWriterList(KTRCalculateHWNodeWarning::Writer(), kWarningTag)(it, n.warnings_);
}

}  // namespace KTR
