// Runs a fuzz target without libFuzzer, on the same inputs in every run, or on files: those that
// libFuzzer found.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/fuzz/inputs.h"

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::atoi(argv[1]) : 0;
  if (argc < 2 || (runs > 0 && argc > 3)) {
    std::fprintf(stderr,
                 "usage: %s RUNS [FOLDER] | FILE...\n"
                 "FOLDER receives the inputs, for a first corpus, and nothing is run.\n",
                 argv[0]);
    return 2;
  }
  for (int i = 1; runs == 0 && i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    const std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  std::mt19937 rng(20260101);
  for (int run = 0; run < runs; ++run) {
    const std::vector<std::uint8_t> input = nextInput(rng);
    if (argc == 3) {
      std::ofstream file(argv[2] + std::string("/") + std::to_string(run), std::ios::binary);
      file.write(reinterpret_cast<const char*>(input.data()),
                 static_cast<std::streamsize>(input.size()));
    } else {
      LLVMFuzzerTestOneInput(input.data(), input.size());
    }
  }
  std::printf("%d inputs\n", runs > 0 ? runs : argc - 1);
}
