// appmgrctl: reads and changes the App Manager's configuration through libappmgrnet.so, loaded
// with dlopen as any caller loads it. docs/cli.md describes the commands and exit statuses.
#include <iostream>

#include "tools/appmgrctl/Program.h"

int main(int argc, char** argv) {
  return appmgrctl::Run(argc, argv, std::cout, std::cerr);
}
