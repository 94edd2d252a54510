#include "ui/framework/accessible_names.h"

#include <initguid.h>
#include <oleacc.h>

#include "platform/com_apartment.h"
#include "platform/diagnostics.h"
#include "platform/handles.h"

namespace {

using UniqueServices = Unique<IAccPropServices*, [](IAccPropServices* services) { services->Release(); }>;

UniqueServices OpenServices() {
  void* services = nullptr;
  ::CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices, &services);
  return UniqueServices(static_cast<IAccPropServices*>(services));
}

}  // namespace

void SetAccessibleNames(HWND dialog, std::span<const AccessibleName> names) {
  const ComApartment apartment;
  const UniqueServices services = OpenServices();
  for (const auto& [controlId, name] : names) {
    HWND control = ::GetDlgItem(dialog, controlId);
    const HRESULT result = services == nullptr ? REGDB_E_CLASSNOTREG
                                               : services->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF,
                                                                          PROPID_ACC_NAME, name);
    if (FAILED(result)) DebugLog(L"SetAccessibleNames - %d, %ls: %08x", controlId, name, static_cast<unsigned>(result));
  }
}

void ClearAccessibleNames(HWND dialog, std::span<const AccessibleName> names) {
  const ComApartment apartment;
  const UniqueServices services = OpenServices();
  if (services == nullptr) return;
  for (const auto& [controlId, name] : names) {
    HWND control = ::GetDlgItem(dialog, controlId);
    MSAAPROPID property = PROPID_ACC_NAME;
    services->ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, &property, 1);
  }
}
