// Runs a fuzz target over the files of the directories that are named.

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/target.h"
#include "util/read_file.h"

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      std::string text;
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);
      ORBO::Require(ORBO::ReadWholeFile(entry.path(), text));
      ORBO::TestInput(ORBO::FuzzInput(text));
      ++count;
    }
  }
  return count > 0 ? 0 : 1;
}
