#pragma once

#include "records/program/program.hpp"

// The topics of the options in this folder.

namespace oxr::rec {

inline constexpr Topic kCopybookTopic{
    "copybook", "Copybook", "where the layout comes from",
    "The copybook is a COBOL source text: its level 01 entries, or a whole program whose data division is looked for. "
    "`oxrrec layout` shows where each field is."};
inline constexpr Topic kRecordsTopic{
    "records", "Records", "how records lie in the file",
    "How records lie in the file. Files from a mainframe keep their headers if they were transferred in binary with "
    "their record descriptors; without, only records of one length, or such whose counts tell their length, can be "
    "told from each other."};
inline constexpr Topic kKindsTopic{
    "when", "Kinds of record", "several kinds of record in one file",
    "Several kinds of record in one file: each condition names a field, its values, and the level 01 entry, or the "
    "group that redefines others, which the record then is.\n"
    "  --when KIND=1:HEADER --when KIND=2,3:DETAIL --when KIND=*:OTHER"};
inline constexpr Topic kFieldsTopic{
    "fields", "Fields", "how fields are stored",
    "How fields are stored, as far as the copybook does not say: the code page of text and digits, the byte order of "
    "numbers, and what blanks and NULs in the place of a number mean."};

}  // namespace oxr::rec
