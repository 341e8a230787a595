// recsim: writes recorder files in the reference format (docs/recsim.md).
#include <iostream>
#include <string>
#include <vector>

#include "tools/recsim/cli.h"

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    return qumbrel::recsim::run(args, std::cout, std::cerr);
}
