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
  using Outcome = std::function<HRESULT(HRESULT)>;

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

  /// An argument as the log shows it; nothing for the place of a result.
  template <class Argument>
  static std::wstring Text(std::uintptr_t word) {
    if constexpr (std::is_same_v<Argument, BSTR>) {
      return word != 0 ? reinterpret_cast<BSTR>(word) : L"(null)";
    } else if constexpr (std::is_same_v<Argument, VARIANT>) {
      const auto& value = *reinterpret_cast<const VARIANT*>(word);
      if (value.vt == VT_EMPTY) return L"empty";
      return value.vt == VT_BSTR ? L"'" + std::wstring(value.bstrVal) + L"'" : L"?";
    } else if constexpr (std::is_pointer_v<Argument>) {
      return L"";
    } else {
      return std::to_wstring(static_cast<LONG>(static_cast<Argument>(word)));
    }
  }
  /// The function notes its call; when that succeeds, it gives the object, if any, to the place that its last argument names.
  template <class Interface, class... Arguments>
  void On(FakeObject& object, HRESULT (STDMETHODCALLTYPE Interface::*function)(Arguments...), const std::wstring& name,
          FakeObject* given = nullptr, const Outcome& outcome = {}) {
    object[function] = [=, this](Words words) {
      std::wstring text;
      const auto add = [&text](const std::wstring& part) { text += (text.empty() || part.empty() ? L"" : L" ") + part; };
      const Words first = words;
      (add(Text<Arguments>(*words++)), ...);
      HRESULT result = Note(name, text);
      if (outcome) result = outcome(result);
      return given != nullptr ? Give(result, *given, first[sizeof...(Arguments) - 1]) : result;
    };
  }
  template <class Function>
  FakeObject& Part(FakeObject& whole, Function getter, const std::wstring& name, const wchar_t* verb = L"get ") {
    FakeObject& part = Make(name);
    On(whole, getter, verb + name, &part);
    return part;
  }

  void BuildService() {
    constexpr HRESULT kNoTask = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    FakeObject& service = Make(L"service");
    FakeObject& root = Make(L"root");
    FakeObject& task = Make(L"task");
    factory_[&IClassFactory::CreateInstance] = [this, &service](Words words) { return Give(Note(L"Create"), service, words[2]); };
    On(service, &ITaskService::Connect, L"Connect");
    On(service, &ITaskService::GetFolder, L"GetFolder", &root);
    On(service, &ITaskService::NewTask, L"NewTask", &definition_);
    On(root, &ITaskFolder::GetTask, L"GetTask", &task, [this](HRESULT result) { return taskExists ? result : kNoTask; });
    On(root, &ITaskFolder::DeleteTask, L"DeleteTask", nullptr, [this](HRESULT result) {
      if (FAILED(result)) return result;
      return std::exchange(taskExists, false) ? S_OK : kNoTask;
    });
    On(root, &ITaskFolder::RegisterTaskDefinition, L"Register", &task, [this](HRESULT result) {
      taskExists = taskExists || SUCCEEDED(result);
      return result;
    });
  }

  void BuildDefinition() {
    FakeObject& info = Part(definition_, &ITaskDefinition::get_RegistrationInfo, L"info");
    On(info, &IRegistrationInfo::put_Author, L"author");
    On(info, &IRegistrationInfo::put_Description, L"description");
    FakeObject& principal = Part(definition_, &ITaskDefinition::get_Principal, L"principal");
    On(principal, &IPrincipal::put_Id, L"principal id");
    On(principal, &IPrincipal::put_LogonType, L"logon type");
    On(principal, &IPrincipal::put_RunLevel, L"run level");
    On(principal, &IPrincipal::put_UserId, L"principal user");
    FakeObject& settings = Part(definition_, &ITaskDefinition::get_Settings, L"settings");
    On(settings, &ITaskSettings::put_StartWhenAvailable, L"start when available");
    On(settings, &ITaskSettings::put_DisallowStartIfOnBatteries, L"disallow on batteries");
    On(settings, &ITaskSettings::put_StopIfGoingOnBatteries, L"stop on batteries");
    On(settings, &ITaskSettings::put_AllowDemandStart, L"demand start");
    On(settings, &ITaskSettings::put_Enabled, L"enabled");
    On(settings, &ITaskSettings::put_Hidden, L"hidden");
    On(settings, &ITaskSettings::put_ExecutionTimeLimit, L"time limit");
    On(settings, &ITaskSettings::put_MultipleInstances, L"instances");
    FakeObject& triggers = Part(definition_, &ITaskDefinition::get_Triggers, L"triggers");
    FakeObject& trigger = Part(triggers, &ITriggerCollection::Create, L"trigger", L"create ");
    On(trigger, &ILogonTrigger::put_Id, L"trigger id");
    On(trigger, &ILogonTrigger::put_UserId, L"trigger user");
    FakeObject& actions = Part(definition_, &ITaskDefinition::get_Actions, L"actions");
    FakeObject& action = Part(actions, &IActionCollection::Create, L"action", L"create ");
    On(action, &IExecAction::put_Path, L"path");
    On(action, &IExecAction::put_Arguments, L"arguments");
  }

  std::list<FakeObject> objects_;
  FakeObject& factory_ = Make(L"factory");
  FakeObject& definition_ = Make(L"definition");
  DWORD registration_ = 0;
};
