#include "sim/platform/wide_format.h"

#include <algorithm>
#include <string>

namespace sim {
namespace {

enum class Size { Normal, Short, Long64 };

struct Conversion {
  bool left = false;
  bool zero = false;
  bool plus = false;
  bool blank = false;
  bool alternate = false;
  std::size_t width = 0;
  int precision = -1;  // none
  Size size = Size::Normal;
};

// Copied by value into helpers, a va_list may be an array: it travels in a struct.
struct Arguments {
  std::va_list list;
};

std::u16string Digits(std::uint64_t value, unsigned base, bool upper) {
  const char16_t* const digits = upper ? u"0123456789ABCDEF" : u"0123456789abcdef";
  std::u16string text;
  for (; value != 0; value /= base) text.insert(text.begin(), digits[value % base]);
  return text;
}

// Sign or base prefix, then zeros up to the precision (or, with the flag 0, the width).
std::u16string Number(const Conversion& c, const std::u16string& prefix, std::u16string digits) {
  std::size_t least = c.precision < 0 ? 1 : static_cast<std::size_t>(c.precision);
  if (c.zero && !c.left && c.precision < 0 && c.width > prefix.size()) {
    least = std::max(least, c.width - prefix.size());
  }
  if (digits.size() < least) digits.insert(0, least - digits.size(), u'0');
  return prefix + digits;
}

std::u16string Signed(const Conversion& c, Arguments& arguments) {
  std::int64_t value = c.size == Size::Long64 ? va_arg(arguments.list, std::int64_t)
                                              : va_arg(arguments.list, std::int32_t);
  if (c.size == Size::Short) value = static_cast<std::int16_t>(value);
  const std::u16string sign = value < 0 ? u"-" : c.plus ? u"+" : c.blank ? u" " : u"";
  const auto bits = static_cast<std::uint64_t>(value);
  return Number(c, sign, Digits(value < 0 ? ~bits + 1 : bits, 10, false));
}

std::u16string Unsigned(const Conversion& c, Arguments& arguments, unsigned base, bool upper) {
  std::uint64_t value = c.size == Size::Long64 ? va_arg(arguments.list, std::uint64_t)
                                               : va_arg(arguments.list, std::uint32_t);
  if (c.size == Size::Short) value &= 0xFFFF;
  std::u16string prefix;
  if (c.alternate && value != 0) prefix = base == 16 ? (upper ? u"0X" : u"0x") : u"";
  if (c.alternate && base == 8) prefix = u"0";
  return Number(c, prefix, Digits(value, base, upper));
}

template <typename Unit>
std::u16string Text(const Conversion& c, const Unit* text) {
  if (text == nullptr) return Text(c, u"(null)");
  std::u16string out;
  const auto limit = c.precision < 0 ? ~std::size_t{0} : static_cast<std::size_t>(c.precision);
  while (out.size() < limit && *text != 0) {
    out.push_back(static_cast<char16_t>(static_cast<std::make_unsigned_t<Unit>>(*text++)));
  }
  return out;
}

// Decimal digits, or * for the next argument.
int ReadNumber(const char16_t*& at, Arguments& arguments) {
  if (*at == u'*') {
    ++at;
    return va_arg(arguments.list, int);
  }
  int value = 0;
  while (*at >= u'0' && *at <= u'9') value = std::min(value * 10 + (*at++ - u'0'), 100000);
  return value;
}

Conversion ReadConversion(const char16_t*& at, Arguments& arguments) {
  Conversion c;
  for (bool flag = true; flag;) {
    switch (*at) {
      case u'-':
        c.left = true;
        break;
      case u'0':
        c.zero = true;
        break;
      case u'+':
        c.plus = true;
        break;
      case u' ':
        c.blank = true;
        break;
      case u'#':
        c.alternate = true;
        break;
      default:
        flag = false;
    }
    if (flag) ++at;
  }
  const int width = ReadNumber(at, arguments);
  if (width < 0) c.left = true;
  c.width = static_cast<std::size_t>(width < 0 ? -width : width);
  if (*at == u'.') {
    ++at;
    c.precision = ReadNumber(at, arguments);
  }
  const std::u16string_view rest(at, std::char_traits<char16_t>::length(at));
  if (rest.starts_with(u"I64")) {
    c.size = Size::Long64;
    at += 3;
  } else if (rest.starts_with(u"I32")) {
    at += 3;
  } else if (rest.starts_with(u"ll")) {
    c.size = Size::Long64;
    at += 2;
  } else if (rest.starts_with(u"h")) {
    c.size = Size::Short;
    ++at;
  } else if (rest.starts_with(u"l") || rest.starts_with(u"w")) {
    ++at;
  }
  return c;
}

// False when the letter stands for no conversion.
bool Convert(char16_t letter, Conversion c, Arguments& arguments, std::u16string& out) {
  switch (letter) {
    case u'd':
    case u'i':
      out = Signed(c, arguments);
      return true;
    case u'u':
      out = Unsigned(c, arguments, 10, false);
      return true;
    case u'o':
      out = Unsigned(c, arguments, 8, false);
      return true;
    case u'x':
    case u'X':
      out = Unsigned(c, arguments, 16, letter == u'X');
      return true;
    case u'p':
      c.precision = 8;
      out =
          Number(c, u"",
                 Digits(reinterpret_cast<std::uintptr_t>(va_arg(arguments.list, void*)), 16, true));
      return true;
    case u'c':
      out.assign(1, static_cast<char16_t>(va_arg(arguments.list, int)));
      return true;
    case u's':
      out = c.size == Size::Short ? Text(c, va_arg(arguments.list, const char*))
                                  : Text(c, va_arg(arguments.list, const char16_t*));
      return true;
    case u'S':
      out = Text(c, va_arg(arguments.list, const char*));
      return true;
    case u'%':
      out = u"%";
      return true;
    default:
      return false;
  }
}

}  // namespace

std::size_t WideFormatV(char16_t* buffer, std::size_t capacity, const char16_t* format,
                        std::va_list arguments) {
  Arguments list;
  va_copy(list.list, arguments);
  std::u16string out;
  while (*format != 0) {
    if (*format != u'%') {
      out.push_back(*format++);
      continue;
    }
    const char16_t* at = format + 1;
    const Conversion c = ReadConversion(at, list);
    std::u16string field;
    if (*at == 0 || !Convert(*at, c, list, field)) {
      out.push_back(*format++);
      continue;
    }
    const std::size_t fill = c.width > field.size() ? c.width - field.size() : 0;
    field.insert(c.left ? field.size() : 0, fill, u' ');
    out += field;
    format = at + 1;
  }
  va_end(list.list);
  if (capacity == 0) return 0;
  const std::size_t length = std::min(out.size(), capacity - 1);
  std::copy_n(out.begin(), length, buffer);
  buffer[length] = 0;
  return length;
}

}  // namespace sim
