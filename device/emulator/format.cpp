// The wide printf on argument lists of the guest.
#include <array>
#include <cstdarg>

#include "device/emulator/imports.h"
#include "sim/platform/wide_format.h"

namespace emulator {
namespace {

constexpr std::size_t kMostUnits = 0x4000;  // of one field; more than any buffer of the library

// One conversion as the platform does it.
std::u16string FormatOne(const char16_t* conversion, ...) {
  std::u16string field(kMostUnits, u'\0');
  std::va_list arguments;
  va_start(arguments, conversion);
  field.resize(sim::WideFormatV(field.data(), field.size(), conversion, arguments));
  va_end(arguments);
  return field;
}

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

std::u16string Decimal(std::int32_t value) {
  std::u16string text;
  for (const char c : std::to_string(value)) text.push_back(static_cast<char16_t>(c));
  return text;
}

// A conversion from its percent sign to its letter, widths from the argument list written out.
struct Conversion {
  std::u16string text = u"%";
  char16_t letter = 0;
  bool narrow = false;            // with h
  bool long64 = false;            // with I64 or ll
  std::size_t most = kMostUnits;  // of a text, by its precision
};

class Reader {
 public:
  Reader(const std::u16string& format, const std::function<std::uint32_t()>& next)
      : format_(format), next_(next) {}

  bool AtEnd() const { return at_ == format_.size(); }
  char16_t Peek() const { return AtEnd() ? u'\0' : format_[at_]; }
  char16_t Take() { return format_[at_++]; }

  Conversion ReadConversion() {
    Conversion c;
    while (!AtEnd() && std::u16string_view(u"-0+ #").find(Peek()) != std::u16string_view::npos) {
      c.text.push_back(Take());
    }
    c.text += ReadNumber();
    if (Peek() == u'.') {
      c.text.push_back(Take());
      const std::u16string precision = ReadNumber();
      c.text += precision;
      std::size_t most = 0;
      bool negative = false;
      for (const char16_t digit : precision) {
        negative = negative || digit == u'-';
        if (IsDigit(digit)) most = std::min<std::size_t>(most * 10 + (digit - u'0'), kMostUnits);
      }
      if (!negative) c.most = most;
    }
    for (const std::u16string_view size : {u"I64", u"I32", u"ll", u"h", u"l", u"w"}) {
      if (std::u16string_view(format_).substr(at_).starts_with(size)) {
        c.text += size;
        c.narrow = size == u"h";
        c.long64 = size == u"I64" || size == u"ll";
        at_ += size.size();
        break;
      }
    }
    if (!AtEnd()) {
      c.letter = Take();
      c.text.push_back(c.letter);
    }
    return c;
  }

 private:
  std::u16string ReadNumber() {
    if (Peek() == u'*') {
      ++at_;
      return Decimal(static_cast<std::int32_t>(next_()));
    }
    std::u16string text;
    while (IsDigit(Peek())) text.push_back(Take());
    return text;
  }

  const std::u16string& format_;
  const std::function<std::uint32_t()>& next_;
  std::size_t at_ = 0;
};

}  // namespace

std::u16string FormatForGuest(const Cpu& cpu, const std::u16string& format,
                              const std::function<std::uint32_t()>& next) {
  std::u16string out;
  Reader reader(format, next);
  while (!reader.AtEnd()) {
    const char16_t c = reader.Take();
    if (c != u'%') {
      out.push_back(c);
      continue;
    }
    const Conversion conversion = reader.ReadConversion();
    const char16_t* const text = conversion.text.c_str();
    // The compiler puts a 64-bit argument where the system does not look for it.
    if (conversion.long64) cpu.Fault("a 64-bit argument in a format");
    switch (conversion.letter) {
      case u's':
      case u'S': {
        const std::uint32_t address = next();
        if (address == 0) {
          out += FormatOne(text, nullptr);
        } else if (conversion.letter == u'S' || conversion.narrow) {
          out += FormatOne(text, cpu.Text(address, conversion.most).c_str());
        } else {
          out += FormatOne(text, cpu.WideText(address, conversion.most).c_str());
        }
        break;
      }
      case u'p':
        // Made of digits, so that the width of an address does not matter.
        out += FormatOne(u"%08X", next());
        break;
      case u'd':
      case u'i':
      case u'u':
      case u'o':
      case u'x':
      case u'X':
      case u'c':
        out += FormatOne(text, next());
        break;
      default:
        out += FormatOne(text);
    }
  }
  return out;
}

}  // namespace emulator
