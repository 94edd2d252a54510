#pragma once

// How the texts of tables are read, and what functions make their results of.

#include <functional>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using Function = std::function<std::wstring(const std::wstring&)>;

template <class... Parts>
inline std::wstring Words(const Parts&... parts) {
  std::wostringstream text;
  text.precision(17);
  (text << ... << parts);
  return text.str();
}

template <class Text>
Text Replace(Text text, const std::type_identity_t<Text>& from, const std::type_identity_t<Text>& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != Text::npos; at += to.size()) text.replace(at, from.size(), to);
  return text;
}

inline std::wstring Plain(const std::wstring& text) {
  static const std::wregex kEscape(L"<(?:(CR|LF|NUL|TAB|SP)|(?:U\\+)?([0-9A-F]{2,6})|(\\d+)\\*(<[^>]*>|[^<>]+))>");
  static const std::map<std::wstring, wchar_t> kNames = {
      {L"CR", L'\r'}, {L"LF", L'\n'}, {L"NUL", L'\0'}, {L"TAB", L'\t'}, {L"SP", L' '}};
  std::wstring plain;
  std::wstring rest = text;
  for (std::wsmatch found; std::regex_search(rest, found, kEscape); rest = found.suffix().str()) {
    plain += found.prefix();
    if (found[1].matched) {
      plain += kNames.at(found[1]);
    } else if (found[2].matched) {
      const unsigned long code = std::stoul(found[2], nullptr, 16);
      if (sizeof(wchar_t) == 2 && code > 0xFFFF) {
        plain += {static_cast<wchar_t>(0xD7C0 + (code >> 10)), static_cast<wchar_t>(0xDC00 + (code & 0x3FF))};
      } else {
        plain += static_cast<wchar_t>(code);
      }
    } else {
      const std::wstring unit = Plain(found[4]);
      for (int times = std::stoi(found[3]); times > 0; --times) plain += unit;
    }
  }
  return plain + rest;
}

/// The text before and after the first separator; all of it is before where there is none.
inline std::pair<std::wstring, std::wstring> Halves(const std::wstring& text, wchar_t separator) {
  const std::size_t at = std::min(text.find(separator), text.size());
  return {text.substr(0, at), text.substr(std::min(at + 1, text.size()))};
}

inline std::vector<std::wstring> Split(const std::wstring& text, wchar_t separator) {
  std::vector<std::wstring> parts;
  std::wistringstream in(text + separator);
  for (std::wstring part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

inline std::wstring Join(const std::vector<std::wstring>& texts) {
  std::wstring joined;
  for (const auto& text : texts) joined += (joined.empty() ? L"" : L"; ") + text;
  return joined;
}

/// Numbers up to the end of the text; what is none is 0.
template <class Number>
Number Next(std::wistringstream& in) {
  Number number{};
  in >> number;
  return number;
}

inline std::string Bytes(const std::wstring& text) {
  std::string bytes;
  for (const wchar_t c : text) bytes += static_cast<char>(c);
  return bytes;
}

inline std::wstring Wide(const std::string& bytes) {
  std::wstring text;
  for (const char each : bytes) text += static_cast<wchar_t>(static_cast<unsigned char>(each));
  return text;
}

inline std::wstring YesNo(bool yes) { return yes ? L"yes" : L"no"; }

/// A function that keeps something from row to row.
template <class Machine>
Function OneAfterTheOther() {
  return [machine = std::make_shared<Machine>()](const std::wstring& input) { return (*machine)(input); };
}
