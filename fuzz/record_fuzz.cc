// Fuzzes the record decoder with every catalogued message: the first two bytes choose a
// catalogue row, the rest is the payload. Whatever decodes must encode back to exactly the
// same bytes (the decoder accepts only canonical encodings), and nothing may crash, read out of
// bounds or allocate beyond what the input justifies.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "platform/net/Arena.h"
#include "platform/net/XdrCodec.h"
#include "protocol/Catalogue.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace appmgr::wire;
  if (size < 2) return 0;
  auto rows = Catalogue::Rows();
  const MessageRow* row = rows[(size_t(data[0]) << 8 | data[1]) % rows.size()];
  data += 2;
  size -= 2;

  std::vector<char> record(row->record->size, 0);
  Arena arena;
  CLmError e = Decode(*row->record, data, size, record.data(), arena, row->name);
  if (arena.BytesInUse() > 4 * size + 64) abort();
  if (e) return 0;
  std::vector<uint8_t> again;
  if (EncodeAppend(*row->record, record.data(), again, row->name)) abort();
  if (again.size() != size || (size && std::memcmp(again.data(), data, size) != 0)) abort();
  return 0;
}
