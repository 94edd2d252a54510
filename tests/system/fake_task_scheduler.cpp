#include "tests/system/fake_task_scheduler.h"

#include <taskschd.h>

#include "system/logon_trigger.h"

namespace {

template <std::size_t kSlot>
HRESULT STDMETHODCALLTYPE Entry(FakeObject* self, std::uintptr_t a, std::uintptr_t b, std::uintptr_t c, std::uintptr_t d,
                                std::uintptr_t e, std::uintptr_t f, std::uintptr_t g, std::uintptr_t h) {
  const std::uintptr_t words[] = {a, b, c, d, e, f, g, h};
  return self->OnCall(static_cast<int>(kSlot), words);
}

template <std::size_t... kSlots>
void* const* MakeTable(std::index_sequence<kSlots...>) {
  static void* const table[] = {reinterpret_cast<void*>(&Entry<kSlots>)...};
  return table;
}

std::wstring BstrText(std::uintptr_t word) {
  const auto text = reinterpret_cast<BSTR>(word);
  return text != nullptr ? std::wstring(text, ::SysStringLen(text)) : L"(null)";
}

std::wstring VariantText(std::uintptr_t word) {
  const auto& value = *reinterpret_cast<const VARIANT*>(word);
  if (value.vt == VT_EMPTY) return L"empty";
  return value.vt == VT_BSTR ? L"'" + std::wstring(value.bstrVal) + L"'" : L"?";
}

}  // namespace

FakeObject::FakeObject() : functions_(MakeTable(std::make_index_sequence<kSlots>())) {}

FakeTaskScheduler::FakeTaskScheduler()
    : factory_(Make(L"factory")),
      service_(Make(L"service")),
      root_(Make(L"root")),
      task_(Make(L"task")),
      definition_(Make(L"definition")) {
  factory_[&IClassFactory::CreateInstance] = [give = Give(L"Create", service_)](auto words) { return give(words + 2); };
  service_[&ITaskService::Connect] = [this](auto words) {
    std::wstring arguments;
    for (int i = 0; i < 4; ++i) arguments += VariantText(words[i]) + L" ";
    return Note(L"Connect", arguments);
  };
  service_[&ITaskService::GetFolder] = [this, give = Give(L"GetFolder", root_)](auto words) {
    log.push_back(L"folder " + BstrText(words[0]));
    return give(words + 1);
  };
  service_[&ITaskService::NewTask] = [give = Give(L"NewTask", definition_)](auto words) {
    return words[0] == 0 ? give(words + 1) : E_INVALIDARG;
  };
  BuildFolder();
  BuildDefinition();
  ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  ::CoRegisterClassObject(__uuidof(TaskScheduler), reinterpret_cast<IUnknown*>(&factory_), CLSCTX_INPROC_SERVER,
                          REGCLS_MULTIPLEUSE, &registration_);
  references = 0;
}

FakeTaskScheduler::~FakeTaskScheduler() {
  ::CoRevokeClassObject(registration_);
  ::CoUninitialize();
}

FakeObject& FakeTaskScheduler::Make(std::wstring name) {
  FakeObject& object = objects_.emplace_back();
  for (std::size_t slot = 0; slot < FakeObject::kSlots; ++slot) {
    object.handlers[slot] = [this, name, slot](auto) { return Note(name + L" slot " + std::to_wstring(slot), L"unexpected"); };
  }
  object.handlers[0] = [this, name, &object](auto words) {
    const auto& wanted = *reinterpret_cast<const IID*>(words[0]);
    const bool special = wanted == __uuidof(ILogonTrigger) || wanted == __uuidof(IExecAction);
    if (special && FAILED(Note(L"Query " + name, L""))) return E_NOINTERFACE;
    *reinterpret_cast<FakeObject**>(words[1]) = &object;
    ++references;
    return S_OK;
  };
  object.handlers[1] = [this](auto) { return static_cast<HRESULT>(++references); };
  object.handlers[2] = [this](auto) { return static_cast<HRESULT>(--references); };
  return object;
}

HRESULT FakeTaskScheduler::Note(const std::wstring& call, const std::wstring& arguments) {
  log.push_back(arguments.empty() ? call : call + L"=" + arguments);
  return call == failingCall ? failure : S_OK;
}

FakeObject::Handler FakeTaskScheduler::Give(std::wstring call, FakeObject& object) {
  return [this, call, &object](FakeObject::Words words) {
    const HRESULT result = Note(call, L"");
    if (FAILED(result)) return result;
    *reinterpret_cast<FakeObject**>(words[0]) = &object;
    ++references;
    return S_OK;
  };
}

template <class Function>
void FakeTaskScheduler::Text(FakeObject& object, Function function, std::wstring name) {
  object[function] = [this, name](auto words) { return Note(name, BstrText(words[0])); };
}

template <class Value, class Function>
void FakeTaskScheduler::Number(FakeObject& object, Function function, std::wstring name) {
  // The register holds no more of the value than its own width.
  object[function] = [this, name](auto words) { return Note(name, std::to_wstring(static_cast<Value>(words[0]))); };
}

void FakeTaskScheduler::BuildFolder() {
  root_[&ITaskFolder::GetTask] = [this, give = Give(L"GetTask", task_)](auto words) {
    log.push_back(L"task " + BstrText(words[0]));
    return taskExists ? give(words + 1) : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  };
  root_[&ITaskFolder::DeleteTask] = [this](auto words) {
    const HRESULT result = Note(L"DeleteTask", BstrText(words[0]) + L" " + std::to_wstring(static_cast<LONG>(words[1])));
    if (FAILED(result)) return result;
    return std::exchange(taskExists, false) ? S_OK : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  };
  root_[&ITaskFolder::RegisterTaskDefinition] = [this, give = Give(L"Register", task_)](auto words) {
    const bool ours = words[1] == reinterpret_cast<std::uintptr_t>(&definition_);
    log.push_back(BstrText(words[0]) + (ours ? L" " : L" (another definition) ") + std::to_wstring(static_cast<LONG>(words[2])) +
                  L" " + VariantText(words[3]) + L" " + VariantText(words[4]) + L" " +
                  std::to_wstring(static_cast<LONG>(words[5])) + L" " + VariantText(words[6]));
    const HRESULT result = give(words + 7);
    taskExists = taskExists || SUCCEEDED(result);
    return result;
  };
}

void FakeTaskScheduler::BuildDefinition() {
  FakeObject& info = Make(L"info");
  FakeObject& principal = Make(L"principal");
  FakeObject& settings = Make(L"settings");
  FakeObject& triggers = Make(L"triggers");
  FakeObject& trigger = Make(L"trigger");
  FakeObject& actions = Make(L"actions");
  FakeObject& action = Make(L"action");
  definition_[&ITaskDefinition::get_RegistrationInfo] = Give(L"get info", info);
  definition_[&ITaskDefinition::get_Principal] = Give(L"get principal", principal);
  definition_[&ITaskDefinition::get_Settings] = Give(L"get settings", settings);
  definition_[&ITaskDefinition::get_Triggers] = Give(L"get triggers", triggers);
  definition_[&ITaskDefinition::get_Actions] = Give(L"get actions", actions);
  Text(info, &IRegistrationInfo::put_Author, L"author");
  Text(info, &IRegistrationInfo::put_Description, L"description");
  Text(principal, &IPrincipal::put_Id, L"principal id");
  Number<int>(principal, &IPrincipal::put_LogonType, L"logon type");
  Number<int>(principal, &IPrincipal::put_RunLevel, L"run level");
  Text(principal, &IPrincipal::put_UserId, L"principal user");
  Number<VARIANT_BOOL>(settings, &ITaskSettings::put_StartWhenAvailable, L"start when available");
  Number<VARIANT_BOOL>(settings, &ITaskSettings::put_DisallowStartIfOnBatteries, L"disallow on batteries");
  Number<VARIANT_BOOL>(settings, &ITaskSettings::put_StopIfGoingOnBatteries, L"stop on batteries");
  Number<VARIANT_BOOL>(settings, &ITaskSettings::put_AllowDemandStart, L"demand start");
  Number<VARIANT_BOOL>(settings, &ITaskSettings::put_Enabled, L"enabled");
  Number<VARIANT_BOOL>(settings, &ITaskSettings::put_Hidden, L"hidden");
  Text(settings, &ITaskSettings::put_ExecutionTimeLimit, L"time limit");
  Number<int>(settings, &ITaskSettings::put_MultipleInstances, L"instances");
  const auto create = [this](FakeObject& object, const wchar_t* name) {
    return [this, give = Give(std::wstring(L"create ") + name, object)](auto words) {
      log.push_back(L"type " + std::to_wstring(static_cast<int>(words[0])));
      return give(words + 1);
    };
  };
  triggers[&ITriggerCollection::Create] = create(trigger, L"trigger");
  Text(trigger, &ILogonTrigger::put_Id, L"trigger id");
  Text(trigger, &ILogonTrigger::put_UserId, L"trigger user");
  actions[&IActionCollection::Create] = create(action, L"action");
  Text(action, &IExecAction::put_Path, L"path");
  Text(action, &IExecAction::put_Arguments, L"arguments");
}
