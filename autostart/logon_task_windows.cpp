#include <windows.h>

#define SECURITY_WIN32
#include <oleauto.h>
#include <security.h>
#include <taskschd.h>

#include <iterator>
#include <string>

#include "autostart/executable_path.h"
#include "autostart/logon_task.h"
#include "autostart/logon_trigger.h"
#include "platform/com_apartment.h"
#include "platform/handles.h"

namespace {

constexpr wchar_t kTaskName[] = L"VantoraAdminAutoStart";
constexpr wchar_t kRootFolder[] = L"\\";

class Bstr {
 public:
  explicit Bstr(const std::wstring& text) : text_(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
  [[nodiscard]] BSTR Get() const { return text_.get(); }

 private:
  Unique<BSTR, ::SysFreeString> text_;
};

class Variant {
 public:
  Variant() { ::VariantInit(&value_); }
  explicit Variant(const wchar_t* text) : Variant() {
    value_.bstrVal = ::SysAllocString(text);
    value_.vt = VT_BSTR;
  }
  ~Variant() { ::VariantClear(&value_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  [[nodiscard]] const VARIANT& Get() const { return value_; }

 private:
  VARIANT value_;
};

/// Asks the object for another of its interfaces.
template <class Interface, class Source>
bool Query(const ComPtr<Source>& source, ComPtr<Interface>& target) {
  return SUCCEEDED(source->QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(target.Put())));
}

/// A connection to the local Task Scheduler as the current user, with its root folder.
struct Scheduler {
  ComPtr<ITaskService> service;
  ComPtr<ITaskFolder> root;

  [[nodiscard]] bool Connect() {
    if (FAILED(::CoCreateInstance(__uuidof(TaskScheduler), nullptr, CLSCTX_INPROC_SERVER, __uuidof(ITaskService),
                                  reinterpret_cast<void**>(service.Put())))) {
      return false;
    }
    const Variant empty;
    return SUCCEEDED(service->Connect(empty.Get(), empty.Get(), empty.Get(), empty.Get())) &&
           SUCCEEDED(service->GetFolder(Bstr(kRootFolder).Get(), root.Put()));
  }
};

/// Who the task is for and what it starts.
struct TaskSubject {
  std::wstring userName;  ///< domain\user; empty when the system does not tell it
  std::wstring executablePath;
};

std::wstring CurrentUserName() {
  wchar_t name[256];
  ULONG length = static_cast<ULONG>(std::size(name));
  return ::GetUserNameExW(NameSamCompatible, name, &length) ? std::wstring(name) : std::wstring();
}

void DescribeRegistration(ITaskDefinition& definition) {
  ComPtr<IRegistrationInfo> info;
  if (FAILED(definition.get_RegistrationInfo(info.Put()))) return;
  info->put_Author(Bstr(L"Vantora").Get());
  info->put_Description(Bstr(L"Starts Vantora with administrator privileges at user logon").Get());
}

bool DescribePrincipal(ITaskDefinition& definition, const TaskSubject& subject) {
  ComPtr<IPrincipal> principal;
  if (FAILED(definition.get_Principal(principal.Put()))) return false;
  principal->put_Id(Bstr(L"Principal").Get());
  principal->put_LogonType(TASK_LOGON_INTERACTIVE_TOKEN);
  principal->put_RunLevel(TASK_RUNLEVEL_HIGHEST);
  if (!subject.userName.empty()) principal->put_UserId(Bstr(subject.userName).Get());
  return true;
}

bool DescribeSettings(ITaskDefinition& definition) {
  ComPtr<ITaskSettings> settings;
  if (FAILED(definition.get_Settings(settings.Put()))) return false;
  settings->put_StartWhenAvailable(VARIANT_TRUE);
  settings->put_DisallowStartIfOnBatteries(VARIANT_FALSE);
  settings->put_StopIfGoingOnBatteries(VARIANT_FALSE);
  settings->put_AllowDemandStart(VARIANT_TRUE);
  settings->put_Enabled(VARIANT_TRUE);
  settings->put_Hidden(VARIANT_FALSE);
  settings->put_ExecutionTimeLimit(Bstr(L"PT0S").Get());  // none: the program runs as long as the user is logged on
  settings->put_MultipleInstances(TASK_INSTANCES_IGNORE_NEW);
  return true;
}

bool AddLogonTrigger(ITaskDefinition& definition, const TaskSubject& subject) {
  ComPtr<ITriggerCollection> triggers;
  ComPtr<ITrigger> trigger;
  if (FAILED(definition.get_Triggers(triggers.Put()))) return false;
  if (FAILED(triggers->Create(TASK_TRIGGER_LOGON, trigger.Put()))) return false;
  ComPtr<ILogonTrigger> logon;
  if (!Query(trigger, logon)) return true;
  logon->put_Id(Bstr(L"LogonTrigger").Get());
  if (!subject.userName.empty()) logon->put_UserId(Bstr(subject.userName).Get());
  return true;
}

bool AddStartAction(ITaskDefinition& definition, const TaskSubject& subject) {
  ComPtr<IActionCollection> actions;
  ComPtr<IAction> action;
  ComPtr<IExecAction> exec;
  if (FAILED(definition.get_Actions(actions.Put()))) return false;
  if (FAILED(actions->Create(TASK_ACTION_EXEC, action.Put()))) return false;
  if (!Query(action, exec)) return false;
  exec->put_Path(Bstr(subject.executablePath).Get());
  exec->put_Arguments(Bstr(L"/tray").Get());
  return true;
}

bool RegisterTask(ITaskFolder& root, ITaskDefinition& definition, const Bstr& name) {
  const Variant user;
  const Variant password;
  const Variant securityDescriptor(L"");
  ComPtr<IRegisteredTask> task;
  return SUCCEEDED(root.RegisterTaskDefinition(name.Get(), &definition, TASK_CREATE_OR_UPDATE, user.Get(), password.Get(),
                                               TASK_LOGON_INTERACTIVE_TOKEN, securityDescriptor.Get(), task.Put()));
}

}  // namespace

bool IsAdminTaskInstalled() {
  const ComApartment apartment;
  Scheduler scheduler;
  if (!scheduler.Connect()) return false;
  ComPtr<IRegisteredTask> task;
  return SUCCEEDED(scheduler.root->GetTask(Bstr(kTaskName).Get(), task.Put()));
}

bool InstallAdminTask() {
  const ComApartment apartment;
  const TaskSubject subject{.userName = CurrentUserName(), .executablePath = OwnExecutablePath()};
  const Bstr name(kTaskName);
  if (subject.executablePath.empty() || name.Get() == nullptr) return false;
  Scheduler scheduler;
  if (!scheduler.Connect()) return false;
  scheduler.root->DeleteTask(name.Get(), 0);
  ComPtr<ITaskDefinition> definition;
  if (FAILED(scheduler.service->NewTask(0, definition.Put()))) return false;
  DescribeRegistration(*definition.Get());
  return DescribePrincipal(*definition.Get(), subject) && DescribeSettings(*definition.Get()) &&
         AddLogonTrigger(*definition.Get(), subject) && AddStartAction(*definition.Get(), subject) &&
         RegisterTask(*scheduler.root.Get(), *definition.Get(), name);
}

bool RemoveAdminTask() {
  const ComApartment apartment;
  Scheduler scheduler;
  if (!scheduler.Connect()) return false;
  const HRESULT result = scheduler.root->DeleteTask(Bstr(kTaskName).Get(), 0);
  return SUCCEEDED(result) || result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
}
