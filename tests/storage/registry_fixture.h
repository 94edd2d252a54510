#pragma once

// Registry values of the current user, past the product's own registry code. The prefix that tests run in is thrown away, so
// nothing is put back.

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/handles.h"

class TestKey {
 public:
  explicit TestKey(const wchar_t* path) : path_(path) {}

  void DeleteTree() const { ::RegDeleteTreeW(HKEY_CURRENT_USER, path_); }

  void Write(const wchar_t* name, DWORD type, std::string_view data) const {
    HKEY opened = nullptr;
    ::RegCreateKeyExW(HKEY_CURRENT_USER, path_, 0, nullptr, 0, KEY_WRITE, nullptr, &opened, nullptr);
    const UniqueKey key(opened);
    ::RegSetValueExW(opened, name, 0, type, reinterpret_cast<const BYTE*>(data.data()), static_cast<DWORD>(data.size()));
  }
  void WriteNumber(const wchar_t* name, DWORD value) const { Write(name, REG_DWORD, Bytes(&value, sizeof value)); }
  /// Characters as they stand: a terminator only when the text has one.
  void WriteText(const wchar_t* name, DWORD type, std::wstring_view text) const {
    Write(name, type, Bytes(text.data(), text.size() * sizeof(wchar_t)));
  }
  void DeleteValue(const wchar_t* name) const { ::RegDeleteValueW(Open(KEY_WRITE).get(), name); }

  /// The value's type and bytes as "type:bytes"; "none" when it is missing.
  [[nodiscard]] std::string Read(const wchar_t* name) const {
    const UniqueKey key = Open(KEY_READ);
    std::string data(100'000, '\0');
    DWORD sizeBytes = static_cast<DWORD>(data.size());
    DWORD type = 0;
    if (::RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &sizeBytes) != ERROR_SUCCESS) {
      return "none";
    }
    return std::to_string(type) + ":" + data.substr(0, sizeBytes);
  }

  static std::string Bytes(const void* data, std::size_t sizeBytes) { return {static_cast<const char*>(data), sizeBytes}; }
  static std::string Text(std::wstring_view text, DWORD type = REG_SZ) {
    return std::to_string(type) + ":" + Bytes(text.data(), text.size() * sizeof(wchar_t));
  }

 private:
  [[nodiscard]] UniqueKey Open(REGSAM access) const {
    HKEY key = nullptr;
    return UniqueKey(::RegOpenKeyExW(HKEY_CURRENT_USER, path_, 0, access, &key) == ERROR_SUCCESS ? key : nullptr);
  }

  const wchar_t* path_;
};
