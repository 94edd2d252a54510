#pragma once

// A Task Scheduler of our own, registered in this process in place of the system's, for what the system's has only as a stub (the
// logon trigger) or cannot be made to do (fail at a given step). It writes down every call as a line of text. Its objects know
// their functions by the places that these have in their interfaces, which golden/task_scheduler.txt lists; a call of any other
// is seen too.

#include <windows.h>

#include <taskschd.h>

#include <fstream>
#include <utility>

#include "autostart/logon_trigger.h"
#include "tests/tables/table_text.h"

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

  bool taskExists = false;
  std::wstring failingCall;  ///< the call of this name fails ...
  HRESULT failure = E_FAIL;  ///< ... with this
  std::wstring log;          ///< the calls in order, "name" or "name=arguments", each with a line end
  std::wstring lastCall;     ///< its name
  long references = 0;       ///< held by the program on all objects together

 private:
  using Arguments = const std::uintptr_t*;  ///< values wider than a word by address

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
  static std::wstring Text(wchar_t kind, std::uintptr_t word) {
    if (kind == L'n') return std::to_wstring(static_cast<LONG>(word));
    if (kind == L'f') return std::to_wstring(static_cast<short>(word));
    if (kind == L't') return word != 0 ? reinterpret_cast<BSTR>(word) : L"(null)";
    if (kind != L'v') return {};
    const auto& value = *reinterpret_cast<const VARIANT*>(word);
    return value.vt == VT_EMPTY ? L"empty" : value.vt == VT_BSTR ? L"'" + std::wstring(value.bstrVal) + L"'" : L"?";
  }

  HRESULT Call(const Object& object, int place, Arguments words) {
    // The three functions that every interface begins with.
    if (place == 0) {
      const auto& wanted = *reinterpret_cast<const IID*>(words[0]);
      const bool special = wanted == __uuidof(ILogonTrigger) || wanted == __uuidof(IExecAction);
      return Give(special ? Note(L"query " + object.name) : S_OK, object.name, words[1]);
    }
    if (place <= 2) return static_cast<HRESULT>(references += place == 1 ? 1 : -1);
    const auto found = functions_.find({object.name, place});
    if (found == functions_.end()) return Note(Words(object.name, L" function ", place));
    const std::vector<std::wstring>& function = found->second;
    std::wstring text;
    std::size_t count = 0;
    for (const wchar_t kind : function[2]) {
      const std::wstring shown = Text(kind, words[count++]);
      text += (text.empty() || shown.empty() ? L"" : L" ") + shown;
    }
    const HRESULT result = Outcome(function[3], Note(function[3], text));
    return function.at(4).empty() ? result : Give(result, function.at(4), words[count - 1]);
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

  using Functions = std::map<std::pair<std::wstring, int>, std::vector<std::wstring>>;
  static Functions ReadFunctions() {
    Functions functions;
    std::wifstream file(VANTORA_GOLDEN_FOLDER "/task_scheduler.txt");
    for (std::wstring line; std::getline(file, line);) {
      if (const auto parts = Split(line, L'|'); !line.starts_with(L"#")) functions[{parts.at(0), std::stoi(parts.at(1))}] = parts;
    }
    return functions;
  }

  const Functions functions_ = ReadFunctions();
  std::map<std::wstring, Object> objects_;
  DWORD registration_ = 0;
};
