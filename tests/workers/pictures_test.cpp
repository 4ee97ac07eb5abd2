#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "pictures/machines.hpp"

namespace oxr::test {
namespace {

TEST(Pictures, ShowTheMachinesAsTheyAre) {
  for (const auto& [name, source] :
       {std::pair("worker", pictures::workerMachine()), {"tree", pictures::treeMachine()}}) {
    std::ifstream file(std::string(OXR_PICTURES_DIR) + '/' + name + ".svg");
    const std::string picture{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(picture.find(source), std::string::npos) << name << ".svg is of other tables: run ./dev docs";
  }
}

}  // namespace
}  // namespace oxr::test
