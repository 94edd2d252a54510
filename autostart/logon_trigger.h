#pragma once

// The Task Scheduler's logon trigger, which mingw-w64's headers leave out; the Windows SDK has it in taskschd.h.

#include <windows.h>

#include <taskschd.h>

#ifndef __ILogonTrigger_INTERFACE_DEFINED__

// Interfaces of this kind end by Release, never by a destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// The functions' order is the interface's binary layout.
struct ILogonTrigger : public ITrigger {
  virtual HRESULT STDMETHODCALLTYPE get_Delay(BSTR* delay) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Delay(BSTR delay) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_UserId(BSTR* user) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_UserId(BSTR user) = 0;
};

#pragma GCC diagnostic pop
__CRT_UUID_DECL(ILogonTrigger, 0x72dade38, 0xfae4, 0x4b3e, 0xba, 0xf4, 0x5d, 0x00, 0x9a, 0xf0, 0x2b, 0x1c)

#endif
