// libFuzzer target for the XML message reader: any bytes a peer may send as an XML payload.
//
// Reads the input through the factory (as the session layer does with a received frame). When
// that succeeds, the message must write itself, both written forms must read back into an equal
// message, and writing that again must give the same text: a document the library accepts has
// exactly one canonical text. Any difference aborts.
//
// Needs: platform/xml (the kpplatform library) and pugixml; seeds in fuzz/corpus/xml/.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/xml/CNMessageBase.h"

namespace {

// Reads `text` back; aborts unless it gives a message equal to `original`.
std::unique_ptr<CNMessageBase> ReadBack(const std::string& text, const CNMessageBase& original) {
  int error = kCNOk;
  std::unique_ptr<CNMessageBase> back = CNMessageBase::FromXml(text.data(), text.size(), &error);
  if (!back || error != kCNOk || !(*back == original)) abort();
  return back;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  int error = kCNOk;
  std::unique_ptr<CNMessageBase> message =
      CNMessageBase::FromXml(reinterpret_cast<const char*>(data), size, &error);
  if (!message) {
    if (error == kCNOk) abort();  // a refusal always carries its code
    return 0;
  }
  if (error != kCNOk) abort();

  for (bool pretty : {false, true}) {
    std::string text;
    int rc = message->serialize(text, pretty);
    // Escaping can make the text longer than the input; only the size limit may refuse it.
    if (rc == kCNErrLimit) return 0;
    if (rc != kCNOk) abort();
    std::unique_ptr<CNMessageBase> back = ReadBack(text, *message);
    std::string again;
    if (back->serialize(again, pretty) != kCNOk || again != text) abort();
  }
  return 0;
}
