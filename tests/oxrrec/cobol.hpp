#pragma once

#include <cstdlib>
#include <stdexcept>

#include "oxrrec/runs.hpp"

// An independent compiler of COBOL, for what it makes of a copybook.

namespace oxr::rec::test {

// What a program prints. Its text is fixed format; it runs in the folder, where copied texts and files may lie too.
inline std::string runCobol(const Folder& folder, const std::string& program, const std::string& options) {
  folder.write("program.cob", program);
  const std::string command = "cd '" + folder.path("") + "' && cobc -x " + options +
                              " -o program program.cob > messages 2>&1 && ./program > printed 2>> messages";
  if (std::system(command.c_str()) != 0) throw std::runtime_error(contentOf(folder.path("messages")));
  return contentOf(folder.path("printed"));
}

// A program of this data division and these statements, a line each.
inline std::string cobolProgram(const std::string& workingStorage, const std::string& statements) {
  return "       IDENTIFICATION DIVISION.\n       PROGRAM-ID. P.\n       DATA DIVISION.\n"
         "       WORKING-STORAGE SECTION.\n" +
         workingStorage + "       PROCEDURE DIVISION.\n" + statements + "           STOP RUN.\n";
}

}  // namespace oxr::rec::test
