// docs/protocol.md's generated part against the catalogue: it must be what `make protocol-doc`
// writes, so a message or record added to the catalogue cannot go undocumented.
#include "tools/protocol-doc/ProtocolDoc.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/support/TestSettings.h"

namespace appmgr::doc {
namespace {

// The first line where the two texts differ, for a message a person can act on.
std::string FirstDifference(const std::string& have, const std::string& want) {
  std::istringstream a(have), b(want);
  std::string lineA, lineB;
  for (int line = 1;; ++line) {
    bool moreA = static_cast<bool>(std::getline(a, lineA));
    bool moreB = static_cast<bool>(std::getline(b, lineB));
    if (!moreA && !moreB) return "none";
    if (lineA != lineB || moreA != moreB) {
      return "generated line " + std::to_string(line) + ": the document has\n  " +
             (moreA ? lineA : "(nothing)") + "\nthe catalogue gives\n  " +
             (moreB ? lineB : "(nothing)");
    }
  }
}

TEST(ProtocolDoc, TheDocumentMatchesTheCatalogue) {
  const std::string path = std::string(APPMGR_SOURCE_DIR) + "/docs/protocol.md";
  const std::string document = ReadFileText(path);
  ASSERT_NE(document.find(kBeginMarker), std::string::npos) << path << " lost its markers";
  const std::string want = RenderGenerated();
  const std::string have = ExtractGenerated(document);
  EXPECT_TRUE(have == want) << "docs/protocol.md does not match the message catalogue. Run\n"
                            << "    make protocol-doc\n"
                            << "and commit docs/protocol.md. First difference, "
                            << FirstDifference(have, want);
}

TEST(ProtocolDoc, ReplacingKeepsTheHandWrittenTextAndNeedsOnePairOfMarkers) {
  const std::string begin = kBeginMarker, end = kEndMarker;
  std::string out, error;
  ASSERT_TRUE(ReplaceGenerated("# Title\n\n" + begin + "\nold\n" + end + "\n\n## After\n", "new\n",
                               &out, &error))
      << error;
  EXPECT_EQ(out, "# Title\n\n" + begin + "\n\nnew\n\n" + end + "\n\n## After\n");
  EXPECT_EQ(ExtractGenerated(out), "new\n");
  std::string again;
  ASSERT_TRUE(ReplaceGenerated(out, "new\n", &again, &error));
  EXPECT_EQ(again, out) << "regenerating an up-to-date document changes nothing";

  for (const std::string& broken : {std::string("no markers"), end + "\n" + begin,
                                    begin + begin + end, begin + "x" + end + "\n" + end}) {
    EXPECT_FALSE(ReplaceGenerated(broken, "new\n", &out, &error)) << broken;
    EXPECT_FALSE(error.empty());
  }
}

}  // namespace
}  // namespace appmgr::doc
