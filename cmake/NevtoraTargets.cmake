# Every target of the project goes through one of these, so that warnings, sanitizers and include roots are set once.

function(nevtora_options target)
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR})
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(NEVTORA_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(NEVTORA_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${NEVTORA_SANITIZE} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PUBLIC -fsanitize=${NEVTORA_SANITIZE})
  endif()
endfunction()

# nevtora_library(name SOURCES ... LINK ...): one static library per folder.
function(nevtora_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LINK})
  nevtora_options(${name})
endfunction()

# nevtora_interface(name LINK ...): a folder that holds headers only.
function(nevtora_interface name)
  cmake_parse_arguments(ARG "" "" "LINK" ${ARGN})
  add_library(${name} INTERFACE)
  target_link_libraries(${name} INTERFACE ${ARG_LINK})
endfunction()

# nevtora_executable(name SOURCES ... LINK ...)
function(nevtora_executable name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  nevtora_options(${name})
endfunction()
