#pragma once

// A Task Scheduler of our own, registered in this process in place of the system's, for what the system's has only as a stub (the
// logon trigger) or cannot be made to do (fail at a given step). It writes down every call as a line of text. Its objects know
// their functions by the places that these have in their interfaces; a call of any other is seen too.

#include <windows.h>

#include <taskschd.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "autostart/logon_trigger.h"

struct FakeFunction {
  const wchar_t* object;
  int place;
  const wchar_t* name;
  const char* arguments;           ///< t: a text, n: a number, f: a flag, v: a variant, others are not shown; a result comes last
  const wchar_t* gives = nullptr;  ///< the object that is the result
};
inline constexpr FakeFunction kFakeFunctions[] = {
    {L"factory", 3, L"Create", "---", L"service"},
    {L"service", 7, L"GetFolder", "t-", L"root"},
    {L"service", 9, L"NewTask", "n-", L"definition"},
    {L"service", 10, L"Connect", "vvvv"},
    {L"root", 13, L"GetTask", "t-", L"task"},
    {L"root", 15, L"DeleteTask", "tn"},
    {L"root", 17, L"Register", "t-nvvnv-", L"task"},
    {L"definition", 7, L"get info", "-", L"info"},
    {L"definition", 9, L"get triggers", "-", L"triggers"},
    {L"definition", 11, L"get settings", "-", L"settings"},
    {L"definition", 15, L"get principal", "-", L"principal"},
    {L"definition", 17, L"get actions", "-", L"actions"},
    {L"info", 8, L"description", "t"},
    {L"info", 10, L"author", "t"},
    {L"principal", 8, L"principal id", "t"},
    {L"principal", 12, L"principal user", "t"},
    {L"principal", 14, L"logon type", "n"},
    {L"principal", 18, L"run level", "n"},
    {L"settings", 8, L"demand start", "f"},
    {L"settings", 14, L"instances", "n"},
    {L"settings", 16, L"stop on batteries", "f"},
    {L"settings", 18, L"disallow on batteries", "f"},
    {L"settings", 22, L"start when available", "f"},
    {L"settings", 28, L"time limit", "t"},
    {L"settings", 30, L"enabled", "f"},
    {L"settings", 38, L"hidden", "f"},
    {L"triggers", 10, L"create trigger", "n-", L"trigger"},
    {L"trigger", 9, L"trigger id", "t"},
    {L"trigger", 23, L"trigger user", "t"},
    {L"actions", 12, L"create action", "n-", L"action"},
    {L"action", 11, L"path", "t"},
    {L"action", 13, L"arguments", "t"},
};

/// Stands in for the system's from construction to destruction, for the thread's apartment.
class FakeTaskScheduler {
 public:
  FakeTaskScheduler() {
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ::CoRegisterClassObject(__uuidof(TaskScheduler), reinterpret_cast<IUnknown*>(&Find(L"factory")), CLSCTX_INPROC_SERVER,
                            REGCLS_MULTIPLEUSE, &registration_);
    references = 0;
  }
  ~FakeTaskScheduler() {
    ::CoRevokeClassObject(registration_);
    ::CoUninitialize();
  }
  FakeTaskScheduler(const FakeTaskScheduler&) = delete;
  FakeTaskScheduler& operator=(const FakeTaskScheduler&) = delete;

  bool taskExists = false;
  std::wstring failingCall;  ///< the call of this name fails ...
  HRESULT failure = E_FAIL;  ///< ... with this
  std::wstring log;          ///< the calls in order, "name" or "name=arguments", each with a line end
  std::wstring lastCall;     ///< its name
  long references = 0;       ///< held by the program on all objects together

 private:
  using Words = const std::uintptr_t*;  ///< a call's arguments; values wider than a word by address

  /// What an interface pointer of the fake points at.
  struct Object {
    void* const* const functions = Table(std::make_index_sequence<64>());
    FakeTaskScheduler* scheduler = nullptr;
    std::wstring name;
  };
  template <int kPlace>
  static HRESULT STDMETHODCALLTYPE Entry(Object* self, std::uintptr_t a, std::uintptr_t b, std::uintptr_t c, std::uintptr_t d,
                                         std::uintptr_t e, std::uintptr_t f, std::uintptr_t g, std::uintptr_t h) {
    const std::uintptr_t words[] = {a, b, c, d, e, f, g, h};
    return self->scheduler->Call(*self, kPlace, words);
  }
  template <std::size_t... kPlace>
  static void* const* Table(std::index_sequence<kPlace...>) {
    static void* const table[] = {reinterpret_cast<void*>(&Entry<int{kPlace}>)...};
    return table;
  }

  Object& Find(const std::wstring& name) {
    Object& object = objects_[name];
    object.scheduler = this;
    object.name = name;
    return object;
  }
  HRESULT Give(HRESULT result, const std::wstring& object, std::uintptr_t target) {
    if (FAILED(result)) return result;
    *reinterpret_cast<Object**>(target) = &Find(object);
    ++references;
    return S_OK;
  }
  HRESULT Note(const std::wstring& call, const std::wstring& arguments = {}) {
    log += (arguments.empty() ? call : call + L"=" + arguments) + L"\n";
    lastCall = call;
    return call == failingCall ? failure : S_OK;
  }
  static std::wstring Text(char kind, std::uintptr_t word) {
    if (kind == 'n') return std::to_wstring(static_cast<LONG>(word));
    if (kind == 'f') return std::to_wstring(static_cast<short>(word));
    if (kind == 't') return word != 0 ? reinterpret_cast<BSTR>(word) : L"(null)";
    if (kind != 'v') return {};
    const auto& value = *reinterpret_cast<const VARIANT*>(word);
    return value.vt == VT_EMPTY ? L"empty" : value.vt == VT_BSTR ? L"'" + std::wstring(value.bstrVal) + L"'" : L"?";
  }

  HRESULT Call(const Object& object, int place, Words words) {
    // The three functions that every interface begins with.
    if (place == 0) {
      const auto& wanted = *reinterpret_cast<const IID*>(words[0]);
      const bool special = wanted == __uuidof(ILogonTrigger) || wanted == __uuidof(IExecAction);
      return Give(special ? Note(L"query " + object.name) : S_OK, object.name, words[1]);
    }
    if (place <= 2) return static_cast<HRESULT>(references += place == 1 ? 1 : -1);
    const auto* function = std::find_if(std::begin(kFakeFunctions), std::end(kFakeFunctions), [&](const FakeFunction& each) {
      return each.object == object.name && each.place == place;
    });
    if (function == std::end(kFakeFunctions)) return Note(object.name + L" function " + std::to_wstring(place));
    std::wstring text;
    std::size_t count = 0;
    for (const char* kind = function->arguments; *kind != '\0'; ++kind) {
      const std::wstring shown = Text(*kind, words[count++]);
      text += (text.empty() || shown.empty() ? L"" : L" ") + shown;
    }
    const HRESULT result = Outcome(function->name, Note(function->name, text));
    return function->gives != nullptr ? Give(result, function->gives, words[count - 1]) : result;
  }
  /// What the task's being there makes of a call, and the call of the task.
  HRESULT Outcome(const std::wstring& call, HRESULT result) {
    if (FAILED(result)) return result;
    const bool existed = taskExists;
    if (call == L"Register") taskExists = true;
    if (call == L"DeleteTask") taskExists = false;
    const bool needsTask = call == L"GetTask" || call == L"DeleteTask";
    return needsTask && !existed ? HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) : result;
  }

  std::map<std::wstring, Object> objects_;
  DWORD registration_ = 0;
};
