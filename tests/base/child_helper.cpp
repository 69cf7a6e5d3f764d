// A small program for the child-process tests, doing one thing per mode:
//   args ...       prints its folder and each argument in brackets, then "end"
//   echo           answers "got " + line; "err" writes to standard error,
//                  "partial" writes a line in two pieces, "exit N" ends with N;
//                  end of input ends with 0
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

int args(int argc, char** argv) {
  char here[4096];
  std::printf("folder [%s]\n", getcwd(here, sizeof here) ? here : "?");
  for (int i = 2; i < argc; ++i) std::printf("[%s]\n", argv[i]);
  std::printf("end\n");
  return 0;
}

int echo() {
  for (std::string line; std::getline(std::cin, line);) {
    if (line == "err") {
      std::fprintf(stderr, "to standard error\n");
    } else if (line == "partial") {
      std::printf("first half, ");
      std::fflush(stdout);
      usleep(300000);
      std::printf("second half\r\n");
    } else if (line.rfind("exit ", 0) == 0) {
      return std::atoi(line.c_str() + 5);
    } else {
      std::printf("got %s\n", line.c_str());
    }
    std::fflush(stdout);
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "args") return args(argc, argv);
  if (mode == "echo") return echo();
  std::fprintf(stderr, "usage: child_helper args|echo\n");
  return 2;
}
