#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bitstreamworkercall.hpp"

// A plain second implementation of what a worker's checker takes and refuses: two charts of letters, a state a line and
// a call a column, read letter by letter.
namespace oxr::fuzz::checker {

// A letter is the state that follows (A is 10), "-" a refusal, "*" a matter of the tree's chart. x and y refuse, and
// the state is 8 or 14 after that. The last letter of a worker's line tells who was misused, parser or writer.
//
// Columns: initializeParse to getNumBytesParsed, the four of writing, descriptor get, set and the unused one; events 15
// to 25; the getters of the tree; the two of embedded messages.
inline constexpr std::string_view kWorkerChart[] = {
    /*  0 */ "1------- 2--- --- ----------- ------- -- P",
    /*  1 */ "18------ ---- -7- ----------- ------- -- P",
    /*  2 */ "-------- -3-- -4- ----------- ------- -- W",
    /*  3 */ "-------- ---6 -5- ----------- ------- -- W",
    /*  4 */ "-------- -5-- --- ----------- ------- -- W",
    /*  5 */ "-------- ---6 --- ----------- ------- -- W",
    /*  6 */ "-------- --6- 6-- ----------- 6666666 -- W",
    /*  7 */ "-9------ ---- --- ----------- ------- -- P",
    /*  8 */ "---AC--- ---- -9- ----------- ------- -- P",
    /*  9 */ "---BD--- ---- --- ----------- ------- -- P",
    /* 10 */ "--AAC-AA ---- AB- *********** ------- ** P",
    /* 11 */ "--BBD--B ---- -B- *********** ------- ** P",
    /* 12 */ "--CACECC ---- CD- *********** ------- ** P",
    /* 13 */ "--DBDFDD ---- DD- *********** ------- ** P",
    /* 14 */ "--EACEEE ---- -E- *********** ------- ** P",
    /* 15 */ "--FBDFFF ---- -F- *********** ------- ** P",
};
// Columns: start by number, by name, end by number, by name; message start and end; content start and end; data;
// project and its dependencies; the two of embedded messages.
inline constexpr std::string_view kTreeChart[] = {
    /*  0 */ "---- 1- -- - -- --", /*  1 */ "-55- -2 8- - -4 --",
    /*  2 */ "---- 1- -- - -- --", /*  3 */ "-55- -- 8- - -- D-",
    /*  4 */ "---- -- -- - 3- --", /*  5 */ "5577 -- -- 6 -- --",
    /*  6 */ "5577 -- -- - -- --", /*  7 */ "5577 -- -- 6 -- --",
    /*  8 */ "99-- -- -C - -- -E", /*  9 */ "99BB -- -- A -- --",
    /* 10 */ "99BB -- -- - -- --", /* 11 */ "99BB -- -- A -- --",
    /* 12 */ "---- -2 -- - -- --", /* 13 */ "---- -- x- - -- -y",
    /* 14 */ "99-- -- -C - -- --",
};

// The letter in a column; blanks are none.
inline char letterAt(std::string_view line, int column) {
  for (const char letter : line)
    if (letter != ' ' && column-- == 0) return letter;
  return '?';
}
inline int stateOf(char letter) {
  return letter <= '9' ? letter - '0' : letter - 'A' + 10;
}

struct Model {
  int worker = 0;
  int tree = 0;
  std::vector<std::string> open;  // "#12" by number, "$name" by name

  // What a call comes to: nothing if it is taken, else the exception's name.
  std::string judge(int call) {
    const std::string_view line = kWorkerChart[worker];
    const char letter = letterAt(line, call);
    if (letter == '*') return judgeEvent(call);
    if (letter == '-') return line.back() == 'P' ? "FIParseException" : "FIWriteException";
    worker = stateOf(letter);
    return "";
  }

 private:
  std::string judgeEvent(int call) {
    const char letter = letterAt(kTreeChart[tree], call <= CALL_PROJECT_DEPENDENCIES ? call - 15 : call - 33 + 11);
    if (letter == 'x') tree = 8;
    if (letter == 'y') tree = 14;
    if (letter == '-' || letter == 'x' || letter == 'y') return "FIHandlerException";
    tree = stateOf(letter);
    return "";
  }
};

}  // namespace oxr::fuzz::checker
