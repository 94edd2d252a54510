#pragma once

// A Task Scheduler of our own, registered in this process in place of the system's, for what the system's has only as a stub (the
// logon trigger) or cannot be made to do (fail at a given step). It writes down every call as a line of text.
//
// Its objects are tables of functions of which each knows only its place. Which place a function of an interface has is found by
// calling it on a probe, so that no table is kept by hand and a call of anything that is not expected here is seen too.

#include <windows.h>

#include <taskschd.h>

#include <array>
#include <functional>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "system/logon_trigger.h"

/// What an interface pointer of the fake points at.
struct FakeObject {
  using Words = const std::uintptr_t*;  ///< the arguments after the object; values wider than a word by address
  static constexpr std::size_t kSlots = 64;

  template <std::size_t kSlot>
  static HRESULT STDMETHODCALLTYPE Entry(FakeObject* self, std::uintptr_t a, std::uintptr_t b, std::uintptr_t c, std::uintptr_t d,
                                         std::uintptr_t e, std::uintptr_t f, std::uintptr_t g, std::uintptr_t h) {
    const std::uintptr_t words[] = {a, b, c, d, e, f, g, h};
    return self->handlers[kSlot](words);
  }
  template <std::size_t... kSlot>
  static void* const* Table(std::index_sequence<kSlot...>) {
    static void* const table[] = {reinterpret_cast<void*>(&Entry<kSlot>)...};
    return table;
  }
  /// The handler of a function of the interface that the object stands for.
  template <class Interface, class... Arguments>
  auto& operator[](HRESULT (STDMETHODCALLTYPE Interface::*function)(Arguments...)) {
    FakeObject probe;
    for (HRESULT slot = 0; auto& handler : probe.handlers) handler = [place = slot++](Words) { return place; };
    return handlers[static_cast<std::size_t>((reinterpret_cast<Interface*>(&probe)->*function)(Arguments{}...))];
  }

  void* const* const functions = Table(std::make_index_sequence<kSlots>());
  std::array<std::function<HRESULT(Words)>, kSlots> handlers;
};

/// Stands in for the system's from construction to destruction, for the thread's apartment.
class FakeTaskScheduler {
 public:
  FakeTaskScheduler() {
    BuildService();
    BuildDefinition();
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ::CoRegisterClassObject(__uuidof(TaskScheduler), reinterpret_cast<IUnknown*>(&factory_), CLSCTX_INPROC_SERVER,
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
  using Words = FakeObject::Words;

  static std::wstring Bstr(std::uintptr_t word) { return word != 0 ? reinterpret_cast<BSTR>(word) : L"(null)"; }
  static std::wstring Variant(std::uintptr_t word) {
    const auto& value = *reinterpret_cast<const VARIANT*>(word);
    if (value.vt == VT_EMPTY) return L"empty";
    return value.vt == VT_BSTR ? L"'" + std::wstring(value.bstrVal) + L"'" : L"?";
  }
  static std::wstring Long(std::uintptr_t word) { return std::to_wstring(static_cast<LONG>(word)); }

  HRESULT Note(const std::wstring& call, const std::wstring& arguments = {}) {
    log += (arguments.empty() ? call : call + L"=" + arguments) + L"\n";
    lastCall = call;
    return call == failingCall ? failure : S_OK;
  }
  HRESULT Give(HRESULT result, FakeObject& object, std::uintptr_t target) {
    if (FAILED(result)) return result;
    *reinterpret_cast<FakeObject**>(target) = &object;
    ++references;
    return S_OK;
  }
  FakeObject& Make(const std::wstring& name) {
    FakeObject& object = objects_.emplace_back();
    for (int slot = 0; auto& handler : object.handlers) {
      handler = [this, name, place = slot++](Words) { return Note(name + L" function " + std::to_wstring(place)); };
    }
    // The three functions that every interface begins with.
    object.handlers[0] = [this, name, &object](Words words) {
      const auto& wanted = *reinterpret_cast<const IID*>(words[0]);
      const bool special = wanted == __uuidof(ILogonTrigger) || wanted == __uuidof(IExecAction);
      return Give(special ? Note(L"query " + name) : S_OK, object, words[1]);
    };
    object.handlers[1] = [this](Words) { return static_cast<HRESULT>(++references); };
    object.handlers[2] = [this](Words) { return static_cast<HRESULT>(--references); };
    return object;
  }
  template <class Function>
  void Text(FakeObject& object, Function function, const wchar_t* name) {
    object[function] = [this, name](Words words) { return Note(name, Bstr(words[0])); };
  }
  /// A number of the property's own width; a flag is a short.
  template <class Value, class Function>
  void Number(FakeObject& object, Function function, const wchar_t* name) {
    object[function] = [this, name](Words words) { return Note(name, std::to_wstring(static_cast<Value>(words[0]))); };
  }
  template <class Function>
  FakeObject& Part(Function getter, const wchar_t* name) {
    FakeObject& part = Make(name);
    definition_[getter] = [this, name, &part](Words words) { return Give(Note(std::wstring(L"get ") + name), part, words[0]); };
    return part;
  }
  template <class Function>
  FakeObject& Created(FakeObject& collection, Function create, const wchar_t* name) {
    FakeObject& item = Make(name);
    collection[create] = [this, name, &item](Words words) {
      return Give(Note(std::wstring(L"create ") + name, Long(words[0])), item, words[1]);
    };
    return item;
  }

  void BuildService() {
    FakeObject& service = Make(L"service");
    FakeObject& root = Make(L"root");
    FakeObject& task = Make(L"task");
    factory_[&IClassFactory::CreateInstance] = [this, &service](Words words) { return Give(Note(L"Create"), service, words[2]); };
    service[&ITaskService::Connect] = [this](Words words) {
      return Note(L"Connect", Variant(words[0]) + Variant(words[1]) + Variant(words[2]) + Variant(words[3]));
    };
    service[&ITaskService::GetFolder] = [this, &root](Words words) {
      return Give(Note(L"GetFolder", Bstr(words[0])), root, words[1]);
    };
    service[&ITaskService::NewTask] = [this](Words words) {
      return Give(Note(L"NewTask", Long(words[0])), definition_, words[1]);
    };
    constexpr HRESULT kNoTask = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    root[&ITaskFolder::GetTask] = [this, &task](Words words) {
      const HRESULT result = Note(L"GetTask", Bstr(words[0]));
      return Give(taskExists ? result : kNoTask, task, words[1]);
    };
    root[&ITaskFolder::DeleteTask] = [this](Words words) {
      const HRESULT result = Note(L"DeleteTask", Bstr(words[0]) + L" " + Long(words[1]));
      if (FAILED(result)) return result;
      return std::exchange(taskExists, false) ? S_OK : kNoTask;
    };
    root[&ITaskFolder::RegisterTaskDefinition] = [this, &task](Words words) {
      const bool ours = words[1] == reinterpret_cast<std::uintptr_t>(&definition_);
      const HRESULT result =
          Note(L"Register", Bstr(words[0]) + (ours ? L" " : L" another ") + Long(words[2]) + L" " + Variant(words[3]) + L" " +
                                Variant(words[4]) + L" " + Long(words[5]) + L" " + Variant(words[6]));
      taskExists = taskExists || SUCCEEDED(result);
      return Give(result, task, words[7]);
    };
  }

  void BuildDefinition() {
    FakeObject& info = Part(&ITaskDefinition::get_RegistrationInfo, L"info");
    Text(info, &IRegistrationInfo::put_Author, L"author");
    Text(info, &IRegistrationInfo::put_Description, L"description");
    FakeObject& principal = Part(&ITaskDefinition::get_Principal, L"principal");
    Text(principal, &IPrincipal::put_Id, L"principal id");
    Number<LONG>(principal, &IPrincipal::put_LogonType, L"logon type");
    Number<LONG>(principal, &IPrincipal::put_RunLevel, L"run level");
    Text(principal, &IPrincipal::put_UserId, L"principal user");
    FakeObject& settings = Part(&ITaskDefinition::get_Settings, L"settings");
    Number<short>(settings, &ITaskSettings::put_StartWhenAvailable, L"start when available");
    Number<short>(settings, &ITaskSettings::put_DisallowStartIfOnBatteries, L"disallow on batteries");
    Number<short>(settings, &ITaskSettings::put_StopIfGoingOnBatteries, L"stop on batteries");
    Number<short>(settings, &ITaskSettings::put_AllowDemandStart, L"demand start");
    Number<short>(settings, &ITaskSettings::put_Enabled, L"enabled");
    Number<short>(settings, &ITaskSettings::put_Hidden, L"hidden");
    Text(settings, &ITaskSettings::put_ExecutionTimeLimit, L"time limit");
    Number<LONG>(settings, &ITaskSettings::put_MultipleInstances, L"instances");
    FakeObject& triggers = Part(&ITaskDefinition::get_Triggers, L"triggers");
    FakeObject& trigger = Created(triggers, &ITriggerCollection::Create, L"trigger");
    Text(trigger, &ILogonTrigger::put_Id, L"trigger id");
    Text(trigger, &ILogonTrigger::put_UserId, L"trigger user");
    FakeObject& actions = Part(&ITaskDefinition::get_Actions, L"actions");
    FakeObject& action = Created(actions, &IActionCollection::Create, L"action");
    Text(action, &IExecAction::put_Path, L"path");
    Text(action, &IExecAction::put_Arguments, L"arguments");
  }

  std::list<FakeObject> objects_;
  FakeObject& factory_ = Make(L"factory");
  FakeObject& definition_ = Make(L"definition");
  DWORD registration_ = 0;
};
