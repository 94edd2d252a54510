#pragma once

// Owner types for the system's resources: each is closed where its owner dies, and nowhere else. Windows builds only.

#include <windows.h>

#include <memory>
#include <type_traits>

template <auto Close>
struct Closer {
  template <class Handle>
  void operator()(Handle handle) const noexcept {
    Close(handle);
  }
};

template <class Handle, auto Close>
using Unique = std::unique_ptr<std::remove_pointer_t<Handle>, Closer<Close>>;

using UniqueHandle = Unique<HANDLE, ::CloseHandle>;
using UniqueKey = Unique<HKEY, ::RegCloseKey>;
using UniqueFont = Unique<HFONT, ::DeleteObject>;
using UniqueBrush = Unique<HBRUSH, ::DeleteObject>;
using UniqueIcon = Unique<HICON, ::DestroyIcon>;
using UniqueMenu = Unique<HMENU, ::DestroyMenu>;
using UniqueHook = Unique<HHOOK, ::UnhookWindowsHookEx>;
using UniqueModule = Unique<HMODULE, ::FreeLibrary>;
using UniqueGlobal = Unique<HGLOBAL, ::GlobalFree>;

/// CreateFileW answers INVALID_HANDLE_VALUE, not null; this makes an owner of either.
inline UniqueHandle OwnFileHandle(HANDLE handle) { return UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle); }

struct FindCloser {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const noexcept {
    if (handle != INVALID_HANDLE_VALUE) ::FindClose(handle);
  }
};
using UniqueFind = std::unique_ptr<void, FindCloser>;

/// The clipboard, held only while this lives.
class ClipboardLock {
 public:
  explicit ClipboardLock(HWND owner) : open_(::OpenClipboard(owner) != FALSE) {}
  ~ClipboardLock() {
    if (open_) ::CloseClipboard();
  }
  ClipboardLock(const ClipboardLock&) = delete;
  ClipboardLock& operator=(const ClipboardLock&) = delete;
  [[nodiscard]] bool IsOpen() const { return open_; }

 private:
  bool open_;
};

/// A window's device context with the font selected into it, put back and released at the end.
class WindowDc {
 public:
  explicit WindowDc(HWND window, HFONT font = nullptr) : window_(window), dc_(::GetDC(window)) {
    if (dc_ != nullptr && font != nullptr) previous_ = ::SelectObject(dc_, font);
  }
  ~WindowDc() {
    if (previous_ != nullptr) ::SelectObject(dc_, previous_);
    if (dc_ != nullptr) ::ReleaseDC(window_, dc_);
  }
  WindowDc(const WindowDc&) = delete;
  WindowDc& operator=(const WindowDc&) = delete;
  [[nodiscard]] HDC Get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
  HGDIOBJ previous_ = nullptr;
};

/// A COM object's reference.
template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ~ComPtr() { Reset(); }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  [[nodiscard]] Interface* Get() const { return pointer_; }
  Interface* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }
  /// For calls that return a reference; drops the one held before.
  [[nodiscard]] Interface** Put() {
    Reset();
    return &pointer_;
  }
  void Reset() {
    if (pointer_ != nullptr) pointer_->Release();
    pointer_ = nullptr;
  }

 private:
  Interface* pointer_ = nullptr;
};
