#pragma once

// A Task Scheduler of our own, registered in this process in place of the system's, for what the system's has only as a stub (the
// logon trigger) or cannot be made to do (fail at a given step). It writes down every call as a line of text.
//
// Its objects are tables of functions of which each knows only its place. Which place a function of an interface has is found by
// calling it on a probe, so that no table is kept by hand and a call of anything that is not expected here is seen too.

#include <windows.h>

#include <array>
#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

class FakeObject {
 public:
  using Words = const std::uintptr_t*;  ///< the arguments after the object; values wider than a word by address
  using Handler = std::function<HRESULT(Words)>;
  static constexpr std::size_t kSlots = 64;

  FakeObject();
  FakeObject(const FakeObject&) = delete;
  FakeObject& operator=(const FakeObject&) = delete;

  HRESULT OnCall(int slot, Words words) { return handlers[static_cast<std::size_t>(slot)](words); }

  /// The place of a function in its interface.
  template <class Interface, class... Arguments>
  static int SlotOf(HRESULT (STDMETHODCALLTYPE Interface::*function)(Arguments...)) {
    FakeObject probe;
    for (int i = 0; i < static_cast<int>(kSlots); ++i) probe.handlers[static_cast<std::size_t>(i)] = [i](Words) { return i; };
    return (reinterpret_cast<Interface*>(&probe)->*function)(Arguments{}...);
  }
  template <class Function>
  Handler& operator[](Function function) {
    return handlers[static_cast<std::size_t>(SlotOf(function))];
  }

 private:
  void* const* const functions_;  ///< first: what an interface pointer points at

 public:
  std::array<Handler, kSlots> handlers;
};

/// Stands in for the system's from construction to destruction, for the thread's apartment.
class FakeTaskScheduler {
 public:
  FakeTaskScheduler();
  ~FakeTaskScheduler();
  FakeTaskScheduler(const FakeTaskScheduler&) = delete;
  FakeTaskScheduler& operator=(const FakeTaskScheduler&) = delete;

  bool taskExists = false;
  std::wstring failingCall;       ///< the call of this name fails ...
  HRESULT failure = E_FAIL;       ///< ... with this
  std::vector<std::wstring> log;  ///< in order
  long references = 0;            ///< held by the program on all objects together

 private:
  FakeObject& Make(std::wstring name);
  HRESULT Note(const std::wstring& call, const std::wstring& arguments);
  FakeObject::Handler Give(std::wstring call, FakeObject& object);
  template <class Function>
  void Text(FakeObject& object, Function function, std::wstring name);
  template <class Value, class Function>
  void Number(FakeObject& object, Function function, std::wstring name);
  void BuildFolder();
  void BuildDefinition();

  std::list<FakeObject> objects_;
  FakeObject& factory_;
  FakeObject& service_;
  FakeObject& root_;
  FakeObject& task_;
  FakeObject& definition_;
  DWORD registration_ = 0;
};
