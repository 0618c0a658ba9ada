// appmgr-protocol-doc: writes the generated part of docs/protocol.md from the message catalogue.
//
//   appmgr-protocol-doc FILE          rewrites the part between the markers of FILE (make
//                                     protocol-doc); the rest of FILE is left as it is
//   appmgr-protocol-doc --check FILE  exits 1 when FILE's part differs from the catalogue
//   appmgr-protocol-doc               prints the part
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "tools/protocol-doc/ProtocolDoc.h"

int main(int argc, char** argv) {
  const std::string generated = appmgr::doc::RenderGenerated();
  if (argc == 1) {
    std::cout << generated;
    return 0;
  }
  const bool check = argc == 3 && std::strcmp(argv[1], "--check") == 0;
  if (argc != 2 && !check) {
    std::cerr << "usage: appmgr-protocol-doc [--check] [FILE]\n";
    return 2;
  }
  const std::string path = argv[argc - 1];
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::cerr << "appmgr-protocol-doc: cannot read " << path << "\n";
    return 1;
  }
  std::ostringstream text;
  text << in.rdbuf();
  std::string updated, error;
  if (!appmgr::doc::ReplaceGenerated(text.str(), generated, &updated, &error)) {
    std::cerr << "appmgr-protocol-doc: " << path << ": " << error << "\n";
    return 1;
  }
  if (updated == text.str()) return 0;
  if (check) {
    std::cerr << "appmgr-protocol-doc: " << path
              << " differs from the message catalogue; run `make protocol-doc`\n";
    return 1;
  }
  std::ofstream outFile(path, std::ios::binary | std::ios::trunc);
  outFile << updated;
  outFile.close();
  if (!outFile) {
    std::cerr << "appmgr-protocol-doc: cannot write " << path << "\n";
    return 1;
  }
  std::cout << "appmgr-protocol-doc: updated " << path << "\n";
  return 0;
}
