# vantora_library(<folder> [SOURCES ...] [HOST_SOURCES ...] [WINDOWS_SOURCES ...] [DEPENDS <folder>...] [WINDOWS_LIBRARIES ...])
#
# Makes vantora_<folder> from the portable sources (and, on the host, HOST_SOURCES) and, in the Windows build,
# vantora_<folder>_windows from WINDOWS_SOURCES. Linking vantora_<folder> brings the other in.
function(vantora_library folder)
  cmake_parse_arguments(ARG "" "" "SOURCES;HOST_SOURCES;WINDOWS_SOURCES;DEPENDS;WINDOWS_LIBRARIES" ${ARGN})
  set(sources ${ARG_SOURCES})
  if(NOT WIN32)
    list(APPEND sources ${ARG_HOST_SOURCES})
  endif()

  set(dependencies vantora_options)
  foreach(dependency IN LISTS ARG_DEPENDS)
    list(APPEND dependencies vantora_${dependency})
  endforeach()

  if(sources)
    add_library(vantora_${folder} STATIC ${sources})
    target_link_libraries(vantora_${folder} PUBLIC ${dependencies})
  else()
    add_library(vantora_${folder} INTERFACE)
    target_link_libraries(vantora_${folder} INTERFACE ${dependencies})
  endif()

  if(WIN32 AND ARG_WINDOWS_SOURCES)
    add_library(vantora_${folder}_windows STATIC ${ARG_WINDOWS_SOURCES})
    target_link_libraries(vantora_${folder}_windows PUBLIC vantora_${folder} ${ARG_WINDOWS_LIBRARIES})
    if(sources)
      target_link_libraries(vantora_${folder} PUBLIC vantora_${folder}_windows)
    else()
      target_link_libraries(vantora_${folder} INTERFACE vantora_${folder}_windows)
    endif()
  endif()
endfunction()
