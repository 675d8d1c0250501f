#pragma once

// Item lists inside one configuration value (DISK="...", NAMESERVER="...", FEATURES="..."):
// the generic splitter and joiner. Item converters are function objects from a piece of text
// to an item and back (KTRConverters.h, Format::NameValue below).

#include <cctype>
#include <cstddef>
#include <string>
#include <utility>

namespace KTR {
namespace Format {

namespace detail {

// White space as the C library's classification has it (the C locale unless the process
// changed it).
inline bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

inline std::string trim(const std::string& text, std::size_t begin, std::size_t end) {
  while (begin < end && isBlank(text[begin])) ++begin;
  while (end > begin && isBlank(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

}  // namespace detail

// Splits `text` at every character of `separators` (adjacent separators make empty pieces),
// trims white space off each piece, skips pieces that are then empty and stores convert(piece)
// through `out` (a back inserter for sequences, an inserter for sets and maps, where an item
// whose key is already there is dropped). Never fails: returns 0.
template <class Converter, class OutputIt>
int Load(const std::string& text, const std::string& separators, OutputIt out, const Converter& convert = Converter()) {
  std::size_t begin = 0;
  for (;;) {
    const std::size_t end = text.find_first_of(separators, begin);
    const std::string piece = detail::trim(text, begin, end == std::string::npos ? text.size() : end);
    if (!piece.empty()) *out++ = convert(piece);
    if (end == std::string::npos) return 0;
    begin = end + 1;
  }
}

// Replaces `out` with the texts of `items`, in container order, with one `separator` between
// two non-empty texts: an item whose text is empty adds neither text nor separator, so the
// result never starts or ends with a separator and never holds two in a row. Returns 0.
template <class Converter, class Container>
int Save(const Container& items, char separator, std::string& out, const Converter& convert = Converter()) {
  out.clear();
  for (const auto& item : items) {
    const std::string text = convert(item);
    if (text.empty()) continue;
    if (!out.empty()) out += separator;
    out += text;
  }
  return 0;
}

// A name/value item "name<Sep>value", converting both ways (for maps of strings).
// From text: the name is everything before the first Sep (the whole piece when there is none);
// the value is the first white-space-delimited word after it (empty when there is none). Text
// after that word is dropped, so a value cannot hold a blank. Nothing is escaped either way.
template <char Sep>
struct NameValue {
  std::pair<std::string, std::string> operator()(const std::string& piece) const {
    const std::size_t sep = piece.find(Sep);
    if (sep == std::string::npos) return {piece, std::string()};
    std::size_t begin = sep + 1;
    while (begin < piece.size() && detail::isBlank(piece[begin])) ++begin;
    std::size_t end = begin;
    while (end < piece.size() && !detail::isBlank(piece[end])) ++end;
    return {piece.substr(0, sep), piece.substr(begin, end - begin)};
  }
  template <class Name, class Value>
  std::string operator()(const std::pair<Name, Value>& item) const {
    std::string text(item.first);
    text += Sep;
    text += item.second;
    return text;
  }
};

}  // namespace Format
}  // namespace KTR
