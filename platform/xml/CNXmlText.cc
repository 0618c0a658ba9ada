#include "platform/xml/CNXmlText.h"

#include <charconv>

namespace appmgr::xml {

namespace {

bool IsXmlChar(uint32_t c) {
  if (c < 0x20) return c == 0x9 || c == 0xA || c == 0xD;
  if (c <= 0xD7FF) return true;
  if (c < 0xE000) return false;  // surrogates
  if (c <= 0xFFFD) return true;
  return c >= 0x10000 && c <= 0x10FFFF;
}

// Decodes one UTF-8 sequence at text[i]; 0 bytes consumed when it is not a valid shortest form.
size_t DecodeUtf8(std::string_view text, size_t i, uint32_t* c) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
  unsigned char b0 = byte(i);
  if (b0 < 0x80) {
    *c = b0;
    return 1;
  }
  size_t n;
  uint32_t min;
  if ((b0 & 0xE0) == 0xC0) {
    n = 2, min = 0x80, *c = b0 & 0x1F;
  } else if ((b0 & 0xF0) == 0xE0) {
    n = 3, min = 0x800, *c = b0 & 0x0F;
  } else if ((b0 & 0xF8) == 0xF0) {
    n = 4, min = 0x10000, *c = b0 & 0x07;
  } else {
    return 0;
  }
  if (text.size() - i < n) return 0;
  for (size_t k = 1; k < n; ++k) {
    unsigned char b = byte(i + k);
    if ((b & 0xC0) != 0x80) return 0;
    *c = (*c << 6) | (b & 0x3F);
  }
  if (*c < min) return 0;  // overlong
  return n;
}

void AppendUtf8(uint32_t c, std::string* out) {
  if (c < 0x80) {
    out->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (c >> 6)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (c >> 12)));
    out->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (c >> 18)));
    out->push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

// A character reference's number: "#123" or "#x7B", at most U+10FFFF and an XML character.
bool ParseCharRef(std::string_view ref, uint32_t* c) {
  if (ref.size() < 2 || ref[0] != '#') return false;
  int base = 10;
  std::string_view digits = ref.substr(1);
  if (digits[0] == 'x') {
    base = 16;
    digits.remove_prefix(1);
  }
  // 8 digits is more than any character needs; the bound keeps the arithmetic from wrapping.
  if (digits.empty() || digits.size() > 8) return false;
  uint32_t value = 0;
  for (char ch : digits) {
    uint32_t d;
    if (ch >= '0' && ch <= '9') {
      d = ch - '0';
    } else if (base == 16 && ch >= 'a' && ch <= 'f') {
      d = ch - 'a' + 10;
    } else if (base == 16 && ch >= 'A' && ch <= 'F') {
      d = ch - 'A' + 10;
    } else {
      return false;
    }
    value = value * base + d;
  }
  if (!IsXmlChar(value)) return false;
  *c = value;
  return true;
}

bool AllDecimalDigits(std::string_view s) {
  for (char c : s) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

}  // namespace

bool IsXmlText(std::string_view text, size_t* badOffset) {
  for (size_t i = 0; i < text.size();) {
    uint32_t c;
    size_t n = DecodeUtf8(text, i, &c);
    if (n == 0 || !IsXmlChar(c)) {
      if (badOffset) *badOffset = i;
      return false;
    }
    i += n;
  }
  return true;
}

void AppendEscaped(std::string_view text, std::string* out) {
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char* ref;
    switch (text[i]) {
      case '&':
        ref = "&amp;";
        break;
      case '<':
        ref = "&lt;";
        break;
      case '>':
        ref = "&gt;";
        break;
      case '\r':
        ref = "&#13;";
        break;
      default:
        continue;
    }
    out->append(text.substr(start, i - start));
    out->append(ref);
    start = i + 1;
  }
  out->append(text.substr(start));
}

bool AppendUnescaped(std::string_view data, std::string* out) {
  size_t start = 0;
  for (size_t amp = data.find('&'); amp != std::string_view::npos; amp = data.find('&', start)) {
    out->append(data.substr(start, amp - start));
    size_t semi = data.find(';', amp);
    if (semi == std::string_view::npos) return false;
    std::string_view ref = data.substr(amp + 1, semi - amp - 1);
    uint32_t c;
    if (ref == "lt") {
      out->push_back('<');
    } else if (ref == "gt") {
      out->push_back('>');
    } else if (ref == "amp") {
      out->push_back('&');
    } else if (ref == "quot") {
      out->push_back('"');
    } else if (ref == "apos") {
      out->push_back('\'');
    } else if (ParseCharRef(ref, &c)) {
      AppendUtf8(c, out);
    } else {
      return false;
    }
    start = semi + 1;
  }
  out->append(data.substr(start));
  return true;
}

bool ParseInt64(std::string_view text, int64_t* value) {
  std::string_view digits = text;
  if (!digits.empty() && digits[0] == '-') digits.remove_prefix(1);
  if (digits.empty() || !AllDecimalDigits(digits)) return false;
  if (digits[0] == '0' && (digits.size() > 1 || text[0] == '-')) return false;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return ec == std::errc() && end == text.data() + text.size();
}

bool ParseDecimalUnsigned(std::string_view text, unsigned long* value) {
  if (text.empty() || !AllDecimalDigits(text)) return false;
  if (text[0] == '0' && text.size() > 1) return false;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), *value);
  return ec == std::errc() && end == text.data() + text.size();
}

bool ParseHexUnsigned(std::string_view text, unsigned long* value) {
  if (text.size() < 3 || text.size() > 18 || text[0] != '0' || (text[1] != 'x' && text[1] != 'X'))
    return false;
  std::string_view digits = text.substr(2);
  auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), *value, 16);
  return ec == std::errc() && end == digits.data() + digits.size();
}

namespace {

bool IsNameStart(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
bool IsNameChar(char c) {
  return IsNameStart(c) || (c >= '0' && c <= '9');
}

}  // namespace

bool RootNameFromTagName(std::string_view tagName, std::string* rootName) {
  rootName->clear();
  if (tagName.empty() || !IsNameStart(tagName[0])) return false;
  for (size_t i = 0; i < tagName.size(); ++i) {
    if (IsNameChar(tagName[i])) {
      rootName->push_back(tagName[i]);
    } else if (tagName.substr(i, 2) == "::") {
      rootName->push_back('.');
      ++i;
    } else {
      return false;
    }
  }
  return rootName->size() <= kMaxRootNameLength;
}

bool TagNameFromRootName(std::string_view rootName, std::string* tagName) {
  tagName->clear();
  if (rootName.empty() || rootName.size() > kMaxRootNameLength || !IsNameStart(rootName[0]))
    return false;
  for (char c : rootName) {
    if (c == '.') {
      tagName->append("::");
    } else if (IsNameChar(c)) {
      tagName->push_back(c);
    } else {
      return false;
    }
  }
  return true;
}

void AppendInt64(int64_t value, std::string* out) {
  char buf[24];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
  out->append(buf, end);
}

void AppendDecimalUnsigned(unsigned long value, std::string* out) {
  char buf[24];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
  out->append(buf, end);
}

void AppendHex(unsigned long value, std::string* out) {
  char digits[20];
  auto [end, ec] = std::to_chars(digits, digits + sizeof digits, value, 16);
  size_t n = end - digits;
  out->append("0x");
  if (n < 8) out->append(8 - n, '0');
  out->append(digits, n);
}

}  // namespace appmgr::xml
