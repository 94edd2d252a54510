# The compile and link options of every target of ours travel through one INTERFACE target, so that a folder's list of sources says
# nothing about warnings or sanitizers.
add_library(vantora_options INTERFACE)
target_include_directories(vantora_options INTERFACE "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/generated")

if(MSVC)
  target_compile_options(vantora_options INTERFACE /W4 /WX /permissive- /utf-8)
else()
  target_compile_options(
    vantora_options
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Werror
              -Wshadow
              -Wconversion
              -Wsign-conversion
              -Wold-style-cast
              -Wnon-virtual-dtor
              -Woverloaded-virtual
              -Wdouble-promotion
              -Wformat=2
              -Wimplicit-fallthrough
              -Wundef
              -Wmissing-declarations
              -Wextra-semi
              -Wcast-align)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(vantora_options INTERFACE -Wduplicated-cond -Wlogical-op)
  endif()
endif()

if(WIN32)
  target_compile_definitions(
    vantora_options
    INTERFACE UNICODE
              _UNICODE
              NOMINMAX
              WIN32_LEAN_AND_MEAN
              STRICT
              _WIN32_WINNT=0x0601
              NTDDI_VERSION=0x06010000)
  if(NOT MSVC)
    target_compile_options(vantora_options INTERFACE -ffunction-sections -fdata-sections)
    target_link_options(vantora_options INTERFACE -static -Wl,--gc-sections)
  endif()
else()
  find_package(Threads REQUIRED)
  target_link_libraries(vantora_options INTERFACE Threads::Threads)
endif()

if(VANTORA_SANITIZE)
  target_compile_options(vantora_options INTERFACE -fsanitize=${VANTORA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vantora_options INTERFACE -fsanitize=${VANTORA_SANITIZE})
endif()
if(VANTORA_FUZZ)
  target_compile_options(vantora_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

find_program(VANTORA_CCACHE ccache)
if(VANTORA_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${VANTORA_CCACHE}")
endif()
