#include <unistd.h>

#include <iostream>

#include "command/CommandLine.h"

int main(int count, char** arguments) {
  Host::DescriptorSink out(STDOUT_FILENO, "standard output");
  return Host::run({arguments + (count > 0 ? 1 : 0), arguments + count},
                   {out, std::cerr, ::isatty(STDERR_FILENO) == 1, ::isatty(STDOUT_FILENO) == 1});
}
