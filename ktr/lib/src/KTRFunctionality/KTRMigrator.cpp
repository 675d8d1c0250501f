#include "KTRFunctionality/KTRMigrator.h"

#include "MBQMessage/MBQDerivedParsers.h"
#include "MBQMessage/MBQTags.h"

namespace KTR {

namespace Tag = MBQ::Tag;
using MBQ::lenient;
using MBQ::optional;

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

const MBQ::MBQLayout<KTRExcludePath>& KTRExcludePath::layout() {
  static const MBQ::MBQLayout<KTRExcludePath> layout{lenient(optional(Tag::kPath, &KTRExcludePath::path_)),
                                                     optional(Tag::kExcludeFlag, &KTRExcludePath::flag_)};
  return layout;
}

const MBQ::MBQLayout<KTRCalculateHWNodeWarning>& KTRCalculateHWNodeWarning::layout() {
  static const MBQ::MBQLayout<KTRCalculateHWNodeWarning> layout{
      lenient(optional(Tag::kNote, &KTRCalculateHWNodeWarning::text_)),
      lenient(optional(Tag::kCode, &KTRCalculateHWNodeWarning::code_))};
  return layout;
}

// The core part goes into this element untyped, so the element keeps "hw_notesType".
const MBQ::MBQLayout<KTRCalculateHWNodeNotes>& KTRCalculateHWNodeNotes::layout() {
  using R = KTRCalculateHWNodeNotes;
  static const MBQ::MBQLayout<R> layout{MBQ::base<R, MBQ::MBQCalculateHWNodeNotes>(),
                                        lenient(MBQ::list(Tag::kExcludePath, &R::excludePaths_)),
                                        lenient(MBQ::list(Tag::kWarning, &R::warnings_))};
  return layout;
}

}  // namespace KTR
