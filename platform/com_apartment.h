#pragma once

#include <windows.h>

#include <objbase.h>

/// COM for the thread while this lives, whichever way the thread may have initialised it before. Windows builds only.
class ComApartment {
 public:
  ComApartment() : initialized_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
  ~ComApartment() {
    // A thread that was initialised in another way before keeps what it had.
    if (initialized_) ::CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

 private:
  bool initialized_;
};
