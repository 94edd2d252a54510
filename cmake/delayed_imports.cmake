# The libraries that Windows would look for beside the program before its own folder, because they are not in its fixed set: imported
# when first used, by then from the system's folder only (app/main.cpp). delayed_<library> is linked in the library's stead.
if(NOT WIN32)
  return()
endif()

# vantora_delayed_import(<library> <function>...)
function(vantora_delayed_import library)
  add_library(delayed_${library} INTERFACE)
  if(MSVC)
    target_link_libraries(delayed_${library} INTERFACE ${library} delayimp)
    target_link_options(delayed_${library} INTERFACE "/DELAYLOAD:${library}.dll")
    return()
  endif()
  set(base "${PROJECT_BINARY_DIR}/generated/delayed_${library}")
  list(JOIN ARGN "\n" functions)
  file(WRITE "${base}.def" "LIBRARY \"${library}.dll\"\nEXPORTS\n${functions}\n")
  execute_process(
    COMMAND "${CMAKE_DLLTOOL}" -m i386:x86-64 --input-def "${base}.def" --output-delaylib "${base}.a" COMMAND_ERROR_IS_FATAL ANY)
  target_link_libraries(delayed_${library} INTERFACE "${base}.a" delayimp)
endfunction()

vantora_delayed_import(dwmapi DwmSetWindowAttribute)
vantora_delayed_import(secur32 GetUserNameExW)
vantora_delayed_import(
  uxtheme
  CloseThemeData
  DrawThemeBackground
  DrawThemeText
  GetThemeColor
  IsThemeActive
  OpenThemeData
  SetWindowTheme)
vantora_delayed_import(
  wininet
  HttpQueryInfoW
  InternetCloseHandle
  InternetOpenUrlW
  InternetOpenW
  InternetQueryOptionW
  InternetReadFile
  InternetSetOptionW)
vantora_delayed_import(winmm PlaySoundW)
vantora_delayed_import(wintrust WinVerifyTrust)
