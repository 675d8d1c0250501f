#include "KTRFunctionality/KTRMigrator.h"

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;

namespace {

using MBQ::MBQMessageIterator;

MBQ::MBQDerivedParserFactoryT<KTRMigratorCloneOptions, MBQ::MBQMigratorCloneOptions> cloneOptionsFactory(false);
MBQ::MBQDerivedParserFactoryT<KTRCalculateHWNodeNotes, MBQ::MBQCalculateHWNodeNotes> hwNodeNotesFactory(false);

}  // namespace

int KTRMigratorCloneOptions::Reader::operator()(const MBQMessageIterator& it, KTRMigratorCloneOptions& o) const {
  if (MBQ::MBQMigratorCloneOptions::Reader()(it, o) != 0) return -1;
  o.flag_ = it.hasChild(Tag::kCloneFlag);
  // Callers use the configuration without checking it: a request may leave it out.
  if (!o.config_) o.config_ = std::make_shared<KTREnvConfig>();
  MBQ::MBQReaderID(KTREnvConfig::Reader(), Tag::kEnvConfig)(it, *o.config_);
  MBQ::MBQReaderData(o.ids_, Tag::kVeid, MBQ::MBQReaderOptional)(it, o.ids_);
  return 0;
}

int KTRMigratorCloneOptions::Writer::operator()(MBQMessageIterator& it, const KTRMigratorCloneOptions& o) const {
  if (MBQ::MBQMigratorCloneOptions::Writer()(it, o) != 0) return -1;
  if (o.flag_.isSpecified() && o.flag_.get() && it.addChild(Tag::kCloneFlag) != 0) return -1;
  if (o.config_ && MBQ::MBQWriterID(KTREnvConfig::Writer(), Tag::kEnvConfig)(it, *o.config_) != 0) return -1;
  return MBQ::MBQWriterData(o.ids_, Tag::kVeid)(it, o.ids_);
}

int KTRExcludePath::Reader::operator()(const MBQMessageIterator& it, KTRExcludePath& p) const {
  it.getValue(Tag::kPath, p.path_);
  it.getObj(p.flag_, Tag::kExcludeFlag);
  return 0;
}

int KTRExcludePath::Writer::operator()(MBQMessageIterator& it, const KTRExcludePath& p) const {
  if (it.setValue(Tag::kPath, p.path_) != 0) return -1;
  return MBQ::MBQWriterID(MBQ::MBQDefaultWriter<MBQ::MBQOptionalProperty<bool>>(), Tag::kExcludeFlag)(it, p.flag_);
}

int KTRCalculateHWNodeWarning::Reader::operator()(const MBQMessageIterator& it, KTRCalculateHWNodeWarning& w) const {
  it.getValue(Tag::kNote, w.text_);
  it.getValue(Tag::kCode, w.code_);
  return 0;
}

int KTRCalculateHWNodeWarning::Writer::operator()(MBQMessageIterator& it, const KTRCalculateHWNodeWarning& w) const {
  if (it.setValue(Tag::kNote, w.text_) != 0) return -1;
  return it.setValue(Tag::kCode, w.code_);
}

int KTRCalculateHWNodeNotes::Reader::operator()(const MBQMessageIterator& it, KTRCalculateHWNodeNotes& n) const {
  if (MBQ::MBQCalculateHWNodeNotes::Reader()(it, n) != 0) return -1;
  n.excludePaths_.clear();
  MBQ::MBQReaderList(KTRExcludePath::Reader(), Tag::kExcludePath, MBQ::MBQReaderOptional)(it, n.excludePaths_);
  n.warnings_.clear();
  MBQ::MBQReaderList(KTRCalculateHWNodeWarning::Reader(), Tag::kWarning, MBQ::MBQReaderOptional)(it, n.warnings_);
  return 0;
}

int KTRCalculateHWNodeNotes::Writer::operator()(MBQMessageIterator& it, const KTRCalculateHWNodeNotes& n) const {
  // The core part goes into this element untyped, so the element keeps "hw_notesType".
  if (MBQ::MBQCalculateHWNodeNotes::Writer()(it, n) != 0) return -1;
  if (MBQ::MBQWriterList(KTRExcludePath::Writer(), Tag::kExcludePath)(it, n.excludePaths_) != 0) return -1;
  return MBQ::MBQWriterList(KTRCalculateHWNodeWarning::Writer(), Tag::kWarning)(it, n.warnings_);
}

}  // namespace KTR
