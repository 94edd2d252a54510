#pragma once

// Real mouse and keyboard input: goes wherever the system sends it, so the window has to be in front.

#include <windows.h>

#include <string_view>

inline void SendKey(WORD key, bool down) {
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  input.ki.wScan = static_cast<WORD>(::MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
  input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
  ::SendInput(1, &input, sizeof(input));
}

inline void PressKey(WORD key, WORD modifier = 0) {
  if (modifier != 0) SendKey(modifier, true);
  SendKey(key, true);
  SendKey(key, false);
  if (modifier != 0) SendKey(modifier, false);
}

/// Letters and digits of a plain keyboard.
inline void TypeKeys(std::string_view keys) {
  for (const char key : keys) PressKey(static_cast<WORD>(::VkKeyScanA(key) & 0xFF));
}

inline void ClickAt(HWND window, POINT client, int times = 1) {
  ::ClientToScreen(window, &client);
  ::SetCursorPos(client.x, client.y);
  for (int i = 0; i < times; ++i) {
    for (const DWORD flags : {DWORD{MOUSEEVENTF_LEFTDOWN}, DWORD{MOUSEEVENTF_LEFTUP}}) {
      INPUT input{};
      input.type = INPUT_MOUSE;
      input.mi.dwFlags = flags;
      ::SendInput(1, &input, sizeof(input));
    }
  }
}
