#pragma once

// Real mouse and keyboard input: goes wherever the system sends it, so the window has to be in front.

#include <windows.h>

#include <string_view>
#include <vector>

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

/// One batch of input, so that no motion of the real pointer gets between: move there, then click so many times.
inline void ClickAt(HWND window, POINT client, int times = 1) {
  constexpr int kFullScale = 65536;  // of absolute coordinates, whatever the size of the screen
  ::ClientToScreen(window, &client);
  INPUT move{};
  move.type = INPUT_MOUSE;
  move.mi.dx = ::MulDiv(client.x, kFullScale, ::GetSystemMetrics(SM_CXSCREEN)) + 1;
  move.mi.dy = ::MulDiv(client.y, kFullScale, ::GetSystemMetrics(SM_CYSCREEN)) + 1;
  move.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
  INPUT down{};
  down.type = INPUT_MOUSE;
  down.mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  INPUT up{};
  up.type = INPUT_MOUSE;
  up.mi.dwFlags = MOUSEEVENTF_LEFTUP;
  std::vector<INPUT> batch = {move};
  for (int i = 0; i < times; ++i) batch.insert(batch.end(), {down, up});
  ::SendInput(static_cast<UINT>(batch.size()), batch.data(), sizeof(INPUT));
}
