#include <gtest/gtest.h>

#include <string>

#include "harness/textedits.hpp"

namespace oxr::test {
namespace {

const unsigned short* positives(Case& c) {
  return c.text("positive", "0123456789{ABCDEFGHI");
}
const unsigned short* negatives(Case& c) {
  return c.text("negative", "pqrstuvwxy");
}

const Members kMembers = {
    {"CheckSign", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       return converter.CheckSign(text, c.sign(), c.text("minus", "-"), c.text("plus", "+"));
     })},
    {"ReplaceExponentialSign", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       converter.ReplaceExponentialSign(text, c.text("minus", "CR"), c.text("plus", "DB"));
     })},
    {"ExtDecAddSign", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       bool negative = c.flag("negative?", true);
       converter.ExtDecAddSign(text, c.sign(), positives(c), negatives(c), negative);
     })},
    {"ExtDecRemoveSign", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       bool negative = c.flag("negative?");
       converter.ExtDecRemoveSign(text, c.sign(), positives(c), negatives(c), negative);
       return negative;
     })},
    {"HasALeadingMinus", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       return converter.HasALeadingMinus(text, c.sign(), c.text("minus"), nullptr);
     })},
    {"HasATrailingMinus", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       return converter.HasATrailingMinus(text, c.sign(), c.text("minus"), nullptr);
     })},
    {"SubstituteMinusSign", edits([](Case& c, DataCnv& converter, KelWstring& text) {
       converter.SubstituteMinusSign(text, c.sign(), c.text("minus"), c.flag("keep"));
     })},
};

TEST(Signs, CheckSignTakesTheSignOff) {
  runTable(R"(
    member     text   sign ->
    CheckSign  -12    none           -> -12/false
    ~          +12    LS             -> 12/false
    ~          -+12   LS             -> +12/true
    ~          12     LS   minus=''  -> 12/true
    ~          D      LS   minus=DB  -> D/false
    ~          -12    LS   minus=null plus=null -> -12/false
    ~          12-+   TS             -> 12-/false
    ~          12+CR  TS   minus=CR  -> 12/true
    ~          12+-   TS   minus=null plus=null -> 12+-/false
    ~          p23    LI             -> 023/true
    ~          .9z    TI             -> .9:/true
    ~          z9     TI             -> z9/false
    ~          ''     LI             -> /false
    ~          -12    5              -> OXR5502: Invalid sign type: 5
    ReplaceExponentialSign  1.5eCR3    -          -> 1.5e-3
    ~                       DB5EDBCR1  -          -> DB5E+CR1
    ~                       1e         -          -> 1e
    ~                       1e5eDB7    -          -> 1e5eDB7
    ~                       1eDB5      - minus='' -> 1eDB5
    ~                       1eDB5      - minus=null -> 1e+5
  )",
           kMembers);
}

TEST(Signs, TablesFoldTheSignIn) {
  runTable(R"(
    member            text  sign ->
    ExtDecAddSign     123   none                             -> 123
    ~                 123   LS                               -> -123
    ~                 123   TS   negative?=0                 -> 123+
    ~                 A23   LI                               -> q23
    ~                 A2I   TI   negative?=0                 -> A29
    ~                 12!   TI                               -> 12!
    ~                 ''    TI                               -> ''
    ~                 123   TI   positive=0123 negative=pqr  -> 120
    ExtDecRemoveSign  12s   TI                               -> 123/true
    ~                 H     LI   negative=null negative?=1   -> 8/false
    ~                 -12   LS                               -> 12/true
    ~                 ''    LI                               -> OXR5502: Invalid sign type: 1
    ~                 12    -1                               -> OXR5502: Invalid sign type: -1
  )",
           kMembers);
}

TEST(Signs, MinusesAreSeenAndReplaced) {
  runTable(R"(
    member                              text  minus  sign ->
    HasALeadingMinus                    -1    -X     9           -> -1/true
    HasATrailingMinus                   1-    -X     none        -> 1-/true
    HasALeadingMinus                    1-    -      LS          -> 1-/false
    HasATrailingMinus                   -1    -      TS          -> -1/false
    HasALeadingMinus,HasATrailingMinus  ''    -      none        -> /false
    HasALeadingMinus,HasATrailingMinus  1     null   none        -> 1/false
    SubstituteMinusSign                 -12   DB     LS          -> DB12
    ~                                   12    DB     LS   keep=1 -> DB12
    ~                                   -12   CR     TS          -> 12CR
    ~                                   -12   null   LS          -> -12
    ~                                   -12   CR     LI          -> -12
  )",
           kMembers);
}

TEST(Signs, TracesUnderTheirNames) {
  runTable(R"(
    member                  text  sign minus ->
    ReplaceExponentialSign  1     LS   -  -> CheckExponentialSign
    ExtDecAddSign           1     LS   -  -> ''
    ExtDecRemoveSign        1     LS   -  -> ExtDecRemoveSign CheckSign
    SubstituteMinusSign     1     LS   -  -> SubstituteMinusSign
  )",
           tracesOf(kMembers));
}

}  // namespace
}  // namespace oxr::test
