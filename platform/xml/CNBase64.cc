#include "platform/xml/CNBase64.h"

#include <cstdint>

namespace appmgr::xml {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 0..63 for alphabet characters, -1 for anything else.
int Sextet(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

void AppendBase64(std::string_view bytes, std::string* out) {
  out->reserve(out->size() + (bytes.size() + 2) / 3 * 4);
  size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    uint32_t v = static_cast<unsigned char>(bytes[i]) << 16 |
                 static_cast<unsigned char>(bytes[i + 1]) << 8 |
                 static_cast<unsigned char>(bytes[i + 2]);
    out->push_back(kAlphabet[v >> 18]);
    out->push_back(kAlphabet[(v >> 12) & 63]);
    out->push_back(kAlphabet[(v >> 6) & 63]);
    out->push_back(kAlphabet[v & 63]);
  }
  size_t rest = bytes.size() - i;
  if (rest == 0) return;
  uint32_t v = static_cast<unsigned char>(bytes[i]) << 16;
  if (rest == 2) v |= static_cast<unsigned char>(bytes[i + 1]) << 8;
  out->push_back(kAlphabet[v >> 18]);
  out->push_back(kAlphabet[(v >> 12) & 63]);
  out->push_back(rest == 2 ? kAlphabet[(v >> 6) & 63] : '=');
  out->push_back('=');
}

bool DecodeBase64(std::string_view text, std::string* out) {
  if (text.size() % 4 != 0) return false;
  out->reserve(out->size() + text.size() / 4 * 3);
  for (size_t i = 0; i < text.size(); i += 4) {
    bool last = i + 4 == text.size();
    int pad = 0;
    if (last && text[i + 3] == '=') pad = text[i + 2] == '=' ? 2 : 1;
    uint32_t v = 0;
    for (int k = 0; k < 4 - pad; ++k) {
      int s = Sextet(text[i + k]);
      if (s < 0) return false;
      v |= static_cast<uint32_t>(s) << (18 - 6 * k);
    }
    // A canonical encoder leaves the bits below the last whole byte zero.
    if ((pad == 1 && (v & 0xFF) != 0) || (pad == 2 && (v & 0xFFFF) != 0)) return false;
    out->push_back(static_cast<char>(v >> 16));
    if (pad < 2) out->push_back(static_cast<char>((v >> 8) & 0xFF));
    if (pad < 1) out->push_back(static_cast<char>(v & 0xFF));
  }
  return true;
}

}  // namespace appmgr::xml
