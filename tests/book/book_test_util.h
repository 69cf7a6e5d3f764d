#pragma once
// Helpers of the book tests: files in a private folder and an output sink that
// keeps its lines instead of printing them.
#include <string>
#include <vector>

#include "base/output.h"
#include "tests/common/test_files.h"

namespace bookTest {

using namespace testFiles;
using Lines = std::vector<std::string>;

struct Quiet : kobubase::clsOutBuffer {
  Quiet() {
    setEcho(false);
    setKeep(true);
  }
  Lines lines() { return takeAll(); }
};

}  // namespace bookTest
